#pragma once

class QLineEdit;
class QPushButton;

/// The eye button beside a password field. Shows the field's state: "👁" while the text is hidden, "🙈"
/// while it can be read.
namespace PasswordEcho {

/// Hides the field's text and prepares the button: caption, tooltip, accessible name, and no taking of the
/// focus by a click.
void prepare(QLineEdit *field, QPushButton *eye);

/// Turns the field from hidden to readable or back, and the button's caption with it.
void toggle(QLineEdit *field, QPushButton *eye);

} // namespace PasswordEcho

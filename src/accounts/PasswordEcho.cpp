#include "accounts/PasswordEcho.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVariant>

namespace {

void setEcho(QLineEdit *field, QPushButton *eye, QLineEdit::EchoMode mode)
{
    const bool hidden = mode == QLineEdit::Password;
    field->setEchoMode(mode);
    eye->setText(hidden ? QStringLiteral("👁") : QStringLiteral("🙈"));
    eye->setToolTip(hidden ? QStringLiteral("显示密码") : QStringLiteral("隐藏密码"));
    eye->setAccessibleName(eye->toolTip());
}

} // namespace

void PasswordEcho::prepare(QLineEdit *field, QPushButton *eye)
{
    eye->setProperty("eye", true);
    // A click leaves the cursor in the field, so that Enter goes on doing what it did there.
    eye->setFocusPolicy(Qt::TabFocus);
    setEcho(field, eye, QLineEdit::Password);
}

void PasswordEcho::toggle(QLineEdit *field, QPushButton *eye)
{
    setEcho(field, eye, field->echoMode() == QLineEdit::Password ? QLineEdit::Normal : QLineEdit::Password);
}

#pragma once

/// Makes the compiled-in files known to Qt: ":/icons/app.ico", ":/images/...", ":/media/tip.wav". A linker
/// drops the registration that a static library would do by itself, so a program calls this once, early in
/// main(). Further calls change nothing.
void initLarkspireResources();

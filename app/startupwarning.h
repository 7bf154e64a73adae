// The box shown when "-uiport:" names no usable port; it shows the value typed and the range.
#pragma once

class QString;

void showInvalidPortWarning(const QString &value);
// The same box with another text, for the other server-mode options.
void showStartupWarning(const QString &text);

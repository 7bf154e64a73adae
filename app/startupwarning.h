// The box shown when "-uiport:" names no usable port.
#pragma once

class QString;

void showInvalidPortWarning();
// The same box with another text, for the other server-mode options.
void showStartupWarning(const QString &text);

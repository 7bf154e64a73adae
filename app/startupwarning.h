// The box shown when "-uiport:" names no usable port.
#pragma once

void showInvalidPortWarning();

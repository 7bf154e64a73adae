// What the engines need in a Python process: an application object (made on first use when the
// host program has none), the meta-types of queued signals and the translation.
#pragma once

namespace PythonRuntime {

// Safe to call often; the first call does the work.
void ensureApplication();

} // namespace PythonRuntime

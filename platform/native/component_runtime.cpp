#include "platform/component_runtime.h"

// Components are plain objects here, and nothing stands between threads.
ComponentRuntime::ComponentRuntime() = default;
ComponentRuntime::~ComponentRuntime() = default;

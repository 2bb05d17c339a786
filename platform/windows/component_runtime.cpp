#include "platform/component_runtime.h"

#include <objbase.h>

// In the apartment that all threads share; that of a single thread would need a message loop.
ComponentRuntime::ComponentRuntime()
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
}

ComponentRuntime::~ComponentRuntime()
{
    CoUninitialize();
}

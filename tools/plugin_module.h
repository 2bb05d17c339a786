// The plug-in as a host loads it: the module beside the program, or where an installation keeps it.
#pragma once

#include "platform/com_ptr.h"

#include <windows.h>

#include <dshow.h>

class PluginModule {
public:
    PluginModule();    // throws a data Failure that tells where it was looked for
    ~PluginModule();   // no object of the module is left
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;

    ComPtr<IBaseFilter> CreateFilter() const;   // throws a data Failure

private:
    HMODULE module = nullptr;
};

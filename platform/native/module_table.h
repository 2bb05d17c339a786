// Modules: the program and the shared libraries by their load address, as the dynamic linker has them, and resource
// files that are loaded as data.
#pragma once

#include "platform/native/resource_image.h"

#include <string>

struct Module {
    std::string path;
    void* library = nullptr;   // of the dynamic linker, when it was loaded here
    int references = 0;
    std::vector<BYTE> file;   // the bytes of a resource file
    ResourceImage resources;
};

// Null when hModule is no module. A module of null is the program. Stays valid while the module is loaded.
const Module* FindModule(HMODULE hModule);

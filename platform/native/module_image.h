// The compiled resources of a module, announced by an object that the build generates into it.
#pragma once

class ModuleImage {
public:
    // The bytes from begin to end stand in the module's own constant data, and so tell which module it is.
    ModuleImage(const unsigned char* begin, const unsigned char* end);
    ~ModuleImage();
    ModuleImage(const ModuleImage&) = delete;
    ModuleImage& operator=(const ModuleImage&) = delete;

private:
    const unsigned char* first;
};

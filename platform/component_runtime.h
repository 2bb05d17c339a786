// While one lives, its thread, and every thread that sets nothing up itself, may create the platform's components and use
// them. A program has one at the outermost; a library none.
#pragma once

class ComponentRuntime {
public:
    ComponentRuntime();
    ~ComponentRuntime();
    ComponentRuntime(const ComponentRuntime&) = delete;
    ComponentRuntime& operator=(const ComponentRuntime&) = delete;
};

// Every open handle of the process and the object behind it. A handle is a number that is not used again soon, so a
// call on one that was closed fails instead of reaching another object.
#pragma once

#include <windef.h>

#include <memory>

class HandleObject {
public:
    virtual ~HandleObject() = default;
};

HANDLE OpenHandle(std::shared_ptr<HandleObject> object);
std::shared_ptr<HandleObject> FindHandle(HANDLE handle);   // null when it is not open
bool CloseHandleEntry(HANDLE handle);                      // the object ends with its last user

// The object of a handle when it is of class T, else null.
template <class T>
std::shared_ptr<T> ObjectOf(HANDLE handle)
{
    return std::dynamic_pointer_cast<T>(FindHandle(handle));
}

// The owner of one reference to a component.
#pragma once

#include <objidl.h>

#include <utility>

template <class T>
class ComPtr {
public:
    ComPtr() = default;
    explicit ComPtr(T* p) : pObject(p) {}   // takes over the caller's reference
    ComPtr(const ComPtr& other) : pObject(other.pObject)
    {
        if (pObject)
            pObject->AddRef();
    }
    ComPtr(ComPtr&& other) noexcept : pObject(std::exchange(other.pObject, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept
    {
        std::swap(pObject, other.pObject);
        return *this;
    }
    ~ComPtr()
    {
        if (pObject)
            pObject->Release();
    }

    explicit operator bool() const { return pObject != nullptr; }
    T* Get() const { return pObject; }
    T* operator->() const { return pObject; }
    T* Release() { return std::exchange(pObject, nullptr); }
    // For a call that hands out a reference; what was held is released first.
    T** Out()
    {
        *this = ComPtr();
        return &pObject;
    }

private:
    T* pObject = nullptr;
};

// Shares an object: one more reference to it.
template <class T>
ComPtr<T> Share(T* p)
{
    if (p)
        p->AddRef();
    return ComPtr<T>(p);
}

// Another interface of an object; empty when it has none of that id.
template <class T, class From>
ComPtr<T> Query(From* p, REFIID riid)
{
    void* found = nullptr;
    if (!p || FAILED(p->QueryInterface(riid, &found)))
        return {};
    return ComPtr<T>(static_cast<T*>(found));
}

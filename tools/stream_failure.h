// What is thrown on a streaming thread, where nothing may be: kept until the graph has stopped, and thrown then.
#pragma once

#include <windows.h>

#include <exception>
#include <utility>

class StreamFailure {
public:
    // What the call gives, or E_FAIL when it threw.
    template <class Call>
    HRESULT Guard(Call&& call) noexcept
    {
        try {
            return std::forward<Call>(call)();
        } catch (...) {
            thrown = std::current_exception();
            return E_FAIL;
        }
    }
    void Rethrow()
    {
        if (thrown)
            std::rethrow_exception(std::exchange(thrown, nullptr));
    }

private:
    std::exception_ptr thrown;
};

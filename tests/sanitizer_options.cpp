// What the sanitizers of a test executable are to hold to: a request for more memory than there is fails, as it does without
// them, instead of ending the process.

extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

extern "C" [[gnu::visibility("default")]] const char* __tsan_default_options();
extern "C" const char* __tsan_default_options()
{
    return "allocator_may_return_null=1";
}

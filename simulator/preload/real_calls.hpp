// The calls that this library intercepts, as provided by the next library.
#pragma once

#include <dlfcn.h>

#include <atomic>

namespace simulator
{

// A function of the next library, looked up by name at the first call. Nothing here allocates or
// waits: allocators themselves make such calls.
template <typename Function>
class RealCall
{
  public:
    constexpr explicit RealCall(const char *name) noexcept : name_(name) {}

    operator Function *()
    {
        void *function = function_.load(std::memory_order_relaxed);
        if (function == nullptr) {
            function = dlsym(RTLD_NEXT, name_);
            function_.store(function, std::memory_order_relaxed);
        }
        return reinterpret_cast<Function *>(function);
    }

  private:
    const char *name_;
    std::atomic<void *> function_ = nullptr;
};

} // namespace simulator

// The names are also in exports.map.
#define EXPORTED extern "C" [[gnu::visibility("default")]]

#include "ThreadPlatform.h"

#include <algorithm>
#include <cstring>
#include <pthread.h>

namespace qvxsys::task::platform {

void NameThisThread(char const* name) noexcept
{
    constexpr std::size_t kMost = 15;
    char text[kMost + 1] = {};
    std::size_t length = std::min(std::strlen(name), kMost);
    while (length != 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) {
        --length;
    }
    std::copy_n(name, length, text);
    pthread_setname_np(pthread_self(), text);
}

void ReleaseAtThreadEnd(void* object, void (*release)(void* object)) noexcept
{
    struct Held
    {
        ~Held()
        {
            if (what != nullptr) {
                how(what);
            }
        }
        void* what = nullptr;
        void (*how)(void*) = nullptr;
    };
    static thread_local Held t_held;
    t_held.what = object;
    t_held.how = release;
}

} // namespace qvxsys::task::platform

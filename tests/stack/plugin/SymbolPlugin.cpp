// A library with an exported and an inner function on the way to its caller.
#include <cstdlib>
using Callback = int(void*);

[[gnu::noinline]] static int Inner(Callback* callback, void* data)
{
    return callback(data) + 1;
}

extern "C" PLUGIN_EXPORT int PluginCall(Callback* callback, void* data);

extern "C" int PluginCall(Callback* callback, void* data)
{
    return Inner(callback, data) + 1;
}

/// While the linker's lock is held.
[[gnu::constructor]] static void CallAtLoad()
{
    if (char const* const address = std::getenv("SYMBOL_PLUGIN_AT_LOAD")) {
        reinterpret_cast<void (*)()>(std::strtoull(address, nullptr, 16))();
    }
}

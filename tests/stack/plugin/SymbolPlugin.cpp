// A library with an exported and an inner function on the way to its caller.

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

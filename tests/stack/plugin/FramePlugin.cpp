// Calls back through a frame of a size of its own. Built twice, with code of the same length.

extern "C" PLUGIN_EXPORT void CallBack(void (*function)())
{
    char volatile frame[FRAME_BYTES];
    frame[0] = 1;
    function();
    frame[FRAME_BYTES - 1] = frame[0];
}

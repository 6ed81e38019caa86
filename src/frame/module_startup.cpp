// Load-time start-up of the shared library: initialise the application
// object, which obtains the host settings object. Linked into the shared
// library only; the tests drive InitInstance themselves.
#include "module.h"

#if defined(_WIN32)
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) return zenk::TheApp().InitInstance() ? TRUE : FALSE;
    return TRUE;
}
#else
// An ELF constructor cannot refuse dlopen: without a settings object the
// library still loads, and the option query answers 1 until it gets one.
__attribute__((constructor)) static void ZenkModuleStart() { zenk::TheApp().InitInstance(); }
#endif

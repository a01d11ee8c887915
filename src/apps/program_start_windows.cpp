// Part of every program: what is settled before anything else of it runs. Only functions of DLLs that Windows
// keeps loaded may be called here.
#include <windows.h>

namespace {

struct ProgramStart
{
    ProgramStart()
    {
        // DLLs come from the system's folder, not from beside the program or from the current folder, where
        // others may be able to write.
        ::SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
        // A drive without a disk or a bad program file is an error that the call reports, not a box of the
        // system's.
        ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    }
};

#ifdef __GNUC__
__attribute__((init_priority(101))) // before all other objects
#endif
const ProgramStart g_start;

} // namespace

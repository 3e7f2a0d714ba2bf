// Loading the window layer. The toolkit lives in a module of its own that is
// mapped only when a display is named: a batch run or a terminal session
// never pays for it (some 15 MB of shared libraries, a large file's sort
// feels that). The module is looked for beside the program, as it is built,
// then where it is installed.
#include "fields/plat_qt/plat_qt.h"
#include "session/xfwindow_load.h"
#include "platform/platform.h"

#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace {

typedef fs_plat *(*make_fn)(int, char **, fs_qt_gonehook, std::string *);
typedef bool (*display_fn)();

} // namespace

bool xfwindow_named()
{
    const char *w = getenv("WAYLAND_DISPLAY"), *d = getenv("DISPLAY");
    return (w && *w) || (d && *d);
}

fs_plat *xfwindow_open(int argc, char **argv, fs_qt_gonehook ongone, std::string &why)
{
    std::string dir = pl_exedir();
    if (dir.empty())
        dir = "./";
    const std::string places[] = {dir + "libxed_qt.so", dir + "../lib/vorta/libxed_qt.so"};
    void *mod = nullptr;
    std::string err;
    for (const std::string &p : places) {
        if (access(p.c_str(), R_OK) != 0)
            continue;
        mod = dlopen(p.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (mod)
            break;
        const char *e = dlerror();
        err = e ? e : p;
    }
    if (!mod) {
        why = err.empty() ? "the window module is not installed" : "the window module does not load: " + err;
        return nullptr;
    }
    auto display = reinterpret_cast<display_fn>(dlsym(mod, "xed_qt_display"));
    auto make = reinterpret_cast<make_fn>(dlsym(mod, "xed_qt_open"));
    if (!display || !make) {
        why = "the window module is not this program's";
        return nullptr;
    }
    // The toolkit would end the process when asked for a display that does
    // not answer: it is asked first.
    if (!display()) {
        why = "the display does not answer";
        return nullptr;
    }
    return make(argc, argv, ongone, &why);
}

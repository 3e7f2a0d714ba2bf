// The memory wrapper: every allocation of the editor goes through here, and
// a failure never returns to the caller.
#include "session/xed.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unistd.h>

void (*xfnomem_hook)(int reason) = nullptr;

void xfnomem(size_t size, int reason)
{
    static bool inside = false;
    if (reason == 1) {
        const char m[] = "Maximum number of lines exceeded.\n";
        (void)!write(2, m, sizeof m - 1);
    } else {
        char m[160];
        int n = std::snprintf(m, sizeof m,
                              "VORTA: ********      No more memory available      ******** \n"
                              "VORTA:               ( size = %zu )\n",
                              size);
        (void)!write(2, m, (size_t)n);
    }
    if (!inside && xfnomem_hook) {
        inside = true;
        xfnomem_hook(reason);
    }
    std::_Exit(1);
}

void *xfmalloc(size_t size)
{
    void *p = std::malloc(size ? size : 1);
    if (!p)
        xfnomem(size, 0);
    return p;
}

void *xfrealloc(void *ptr, size_t size)
{
    void *p = std::realloc(ptr, size < 2 ? 1 : size);
    if (!p)
        xfnomem(size, 0);
    return p;
}

void *xfgrow(void *ptr, size_t size) { return ptr ? xfrealloc(ptr, size) : xfmalloc(size); }

char *xfstrdup(std::string_view s)
{
    char *p = (char *)xfmalloc(s.size() + 1);
    if (!s.empty())
        std::memcpy(p, s.data(), s.size());
    p[s.size()] = 0;
    return p;
}

static void on_new_failure() { xfnomem(0, 0); }

void xfmem_install() { std::set_new_handler(on_new_failure); }

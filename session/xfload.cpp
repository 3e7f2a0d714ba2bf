// Opening a file into the ring: a name already open is switched to; a new
// one is read whole, one heap text per line.
#include "session/xed.h"
#include "commands/commands.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string absolute(const std::string &name)
{
    std::string p = name;
    if (p.empty() || p[0] != '/') {
        char buf[PATH_MAX];
        if (getcwd(buf, sizeof buf))
            p = std::string(buf) + "/" + p;
    }
    // Fold "/./" and "//" so the same file is found again under one name.
    std::string out;
    for (size_t i = 0; i < p.size();) {
        if (p.compare(i, 2, "//") == 0) {
            i++;
            continue;
        }
        if (p.compare(i, 3, "/./") == 0) {
            i += 2;
            continue;
        }
        out.push_back(p[i++]);
    }
    return out;
}

bool read_whole(const std::string &path, std::string &data)
{
    int fd = open(path.c_str(), O_RDONLY);
    if (fd < 0)
        return false;
    struct stat st;
    if (fstat(fd, &st) == 0 && st.st_size > 0)
        data.reserve((size_t)st.st_size);
    char buf[1 << 16];
    for (;;) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        data.append(buf, (size_t)n);
    }
    close(fd);
    return true;
}

} // namespace

int xfedit(const std::string &name)
{
    std::string path = absolute(name);
    for (int i = 0; i < nbfiles(); i++)
        if (files[(size_t)i]->fname == path) {
            xfswitchto(i);
            return i;
        }
    std::string data;
    bool exists = read_whole(path, data);
    int previous = xfidx;
    int k = xfnewfile();
    xf->fname = path;
    xf->fname2 = path;
    xfdefaults(path, previous);
    xv->fileidx = k;
    if (exists) {
        std::vector<xfline> lines;
        size_t start = 0;
        bool crlf = false;
        while (start < data.size()) {
            size_t nl = data.find('\n', start);
            size_t end = nl == std::string::npos ? data.size() : nl;
            size_t len = end - start;
            if (len && data[end - 1] == '\r') {
                len--;
                crlf = true;
            }
            lines.push_back({xfstrdup(std::string_view(data).substr(start, len)), (int32_t)len, 0, 0});
            start = nl == std::string::npos ? data.size() : nl + 1;
        }
        if (crlf)
            xf->eol_kind = 0;
        xfcheckroom((int32_t)lines.size());
        xf_do('I', nullptr, -1, (int32_t)lines.size(), 0, lines.data(), "xfedit");
        xf->loadmark = xf->nbli() - 1;
    }
    xf->chgcount = 0;
    for (xview *v : views)
        v->perfile[(size_t)k].curline = topline;
    return k;
}

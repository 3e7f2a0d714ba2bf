// Tags: CTags finds the definition of a name through a tags file of the
// universal-ctags format and makes its file current at the definition's
// line; CTags BACK goes back along the jumps made. The setting itself
// (CTags ON|OFF [file], and Query CTags) stays the stored one.
//
// The file's name is looked for the way users of tags expect: with CTags OFF
// (the default) in the current file's folder and each folder above it; with
// CTags ON the name is used as given, relative to the folder the editor
// started in.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sys/stat.h>

namespace {

// Where a jump came from.
struct tag_mark {
    std::string fname; // the file
    int32_t li;        // its current line then
    int32_t col;       // the cursor's column on it
};
std::vector<tag_mark> jumps; // newest last

// What a tags file says of a name.
struct tag_hit {
    std::string file;    // the file, as the tags file's folder sees it
    std::string address; // a line number or a /pattern/
};

int say(const std::string &text, int rc)
{
    xfmsgs(text, 1);
    cmd_rc = rc;
    return 1;
}

bool is_file(const std::string &p)
{
    struct stat st;
    return stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::string folder_of(const std::string &path)
{
    size_t s = path.rfind('/');
    return s == std::string::npos ? std::string(".") : s == 0 ? std::string("/") : path.substr(0, s);
}

// The tags file to read, "" when there is none.
std::string tags_file()
{
    std::string v = xfset_text("CTags");
    std::string_view rest = v;
    std::string on = xffold(xfword(rest));
    std::string name(xftrim(rest));
    if (name.empty())
        name = "tags";
    if (on == "on" || name[0] == '/') {
        std::string p = name[0] == '/' ? name : startdir + "/" + name;
        return is_file(p) ? p : "";
    }
    std::string dir = xf ? folder_of(xf->fname) : startdir;
    for (;;) {
        std::string p = (dir == "/" ? "" : dir) + "/" + name;
        if (is_file(p))
            return p;
        if (dir == "/" || dir.empty() || dir == ".")
            return "";
        dir = folder_of(dir);
    }
}

// The first line of the tags file for `name`; false when it has none. A
// line that does not have the three tab-separated fields is passed over.
bool find_tag(const std::string &path, const std::string &name, tag_hit &hit)
{
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("!_TAG_", 0) == 0)
            continue;
        size_t t1 = line.find('\t');
        if (t1 == std::string::npos || line.compare(0, t1, name) != 0 || t1 != name.size())
            continue;
        size_t t2 = line.find('\t', t1 + 1);
        if (t2 == std::string::npos || t2 == t1 + 1)
            continue;
        hit.file = line.substr(t1 + 1, t2 - t1 - 1);
        std::string addr = line.substr(t2 + 1);
        // The address ends where the extension fields begin: at ;" behind it.
        size_t ext = addr.find(";\"\t");
        if (ext == std::string::npos && addr.size() >= 2 && addr.compare(addr.size() - 2, 2, ";\"") == 0)
            ext = addr.size() - 2;
        hit.address = ext == std::string::npos ? addr : addr.substr(0, ext);
        return !hit.address.empty();
    }
    return false;
}

// The line of the current file an address names: a number, or a /pattern/
// (?pattern? too) that matches a whole line literally, with ^ and $ as its
// anchors and \ quoting the delimiter and itself. -1 when nothing matches.
int32_t address_line(const std::string &a)
{
    if (std::isdigit((unsigned char)a[0])) {
        long n;
        if (!xfnumber(a, n) || n < 1)
            return -1;
        return (int32_t)std::min<long>(n, nbli()) - 1;
    }
    char d = a[0];
    if ((d != '/' && d != '?') || a.size() < 2)
        return -1;
    std::string body = a.substr(1, a.size() - (a.back() == d ? 2 : 1));
    bool head = !body.empty() && body[0] == '^';
    if (head)
        body.erase(0, 1);
    bool tail = !body.empty() && body.back() == '$' && (body.size() < 2 || body[body.size() - 2] != '\\');
    if (tail)
        body.pop_back();
    std::string lit;
    for (size_t i = 0; i < body.size(); i++) {
        if (body[i] == '\\' && i + 1 < body.size() && (body[i + 1] == d || body[i + 1] == '\\'))
            i++;
        lit += body[i];
    }
    for (int32_t li = 0; li < nbli(); li++) {
        std::string_view t(xf->lines[li].text, (size_t)xf->lines[li].len);
        size_t at = t.find(lit);
        while (at != std::string_view::npos) {
            if ((!head || at == 0) && (!tail || at + lit.size() == t.size()))
                return li;
            if (head)
                break;
            at = t.find(lit, at + 1);
        }
    }
    return -1;
}

// The word under the cursor, or "".
std::string cursor_word()
{
    int32_t li, a, b;
    if (!xfcursor_word(li, a, b))
        return "";
    return std::string(xf->lines[li].text + a, (size_t)(b - a));
}

int jump(std::string name)
{
    if (!xf)
        return say("..... No current file", 1);
    if (name.empty())
        name = cursor_word();
    if (name.empty())
        return say("..... No word at the cursor", 5);
    std::string path = tags_file();
    if (path.empty()) {
        std::string v = xfset_text("CTags");
        return say("..... No tags file found (CTags " + v + ")", 1);
    }
    tag_hit hit;
    if (!find_tag(path, name, hit))
        return say("..... Tag not found: " + name, 1);
    std::string target = hit.file[0] == '/' ? hit.file : folder_of(path) + "/" + hit.file;
    if (!is_file(target))
        return say("..... The tags file names a missing file: " + target, 1);
    int32_t col = xfcursor_now().li == curline() ? xfcursor_now().col : 0;
    tag_mark from{xf->fname, curline(), col};
    int was = xfidx;
    if (xfedit(target) != 0)
        return 1;
    int32_t li = address_line(hit.address);
    if (li < 0) {
        std::string missed = "..... The definition of " + name + " is not in " + target + " any more";
        if (xfidx != was && was >= 0 && was < nbfiles())
            xfswitchto(was);
        return say(missed, 1);
    }
    jumps.push_back(from);
    curline() = li;
    std::string_view t(xf->lines[li].text, (size_t)xf->lines[li].len);
    size_t at = t.find(name);
    xfcursor_file(li, at == std::string_view::npos ? 0 : xfcol_at(t.data(), (int32_t)t.size(), (int32_t)at, xf->utf8));
    cmd_rc = 0;
    return 1;
}

int back()
{
    while (!jumps.empty()) {
        tag_mark m = jumps.back();
        jumps.pop_back();
        int k = -1;
        for (int i = 0; i < nbfiles(); i++)
            if (files[(size_t)i]->fname == m.fname)
                k = i;
        // A file quitted since the jump is opened again, if it is still there.
        if (k < 0 && (!is_file(m.fname) || xfedit(m.fname) != 0))
            continue;
        if (k >= 0)
            xfswitchto(k);
        curline() = std::min(m.li, nbli() - 1);
        if (curline() >= 0)
            xfcursor_file(curline(), m.col);
        cmd_rc = 0;
        return 1;
    }
    return say("..... No tag jump to go back to", 1);
}

} // namespace

int xfcm_ctags(const xfcmd &c)
{
    xftrace("Commande xfcm_ctags");
    std::string_view rest = c.ops();
    std::string w = xffold(xfword(rest));
    if (w.empty() || w == "on" || w == "off")
        return xfcm_stored(c);
    if (w == "back") {
        if (!xftrim(rest).empty())
            return xfbad();
        return back();
    }
    if (w == "tag") {
        std::string_view name = xfword(rest);
        if (!xftrim(rest).empty())
            return xfbad();
        return jump(std::string(name));
    }
    return xfbad();
}

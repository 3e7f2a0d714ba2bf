// Compile rules: the rule file's reader and the test of a compiler's output
// line against the rules of a source type. A rule is a head (type, offset,
// nosource) and a chain of patterns of the LEGACY engine, each searched from
// where the one before it ended.
#include "tools/tools.h"

#include "commands/xfregex.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sys/stat.h>

namespace {

std::string fmt(const char *f, const std::string &file, int line)
{
    char buf[1400];
    std::snprintf(buf, sizeof buf, f, file.c_str(), line);
    return buf;
}

bool blank_line(const std::string &l)
{
    return l.find_first_not_of(" \t\r") == std::string::npos;
}

// Parses a head line; false with the message in `err`.
bool read_head(const std::string &l, const std::string &path, int lineno, tl_rule &r, std::string &err)
{
    size_t colon = l.find(':');
    if (colon == std::string::npos) {
        err = fmt("file %s: invalid filetype on line %d", path, lineno);
        return false;
    }
    r = tl_rule{};
    r.type = l.substr(0, colon);
    r.line = lineno;
    const char *p = l.c_str() + colon + 1;
    while (*p == ' ' || *p == '\t')
        p++;
    if (*p == 0 || *p == '\r')
        return true;
    char *end;
    errno = 0;
    long n = std::strtol(p, &end, 10);
    if (end == p || errno != 0 || n < 0 || n > 1000000) {
        err = fmt("file %s: invalid numerical ofset on line %d", path, lineno);
        return false;
    }
    r.offset = (int)n;
    p = end;
    while (*p == ' ' || *p == '\t')
        p++;
    std::string word;
    while (*p && *p != ' ' && *p != '\t' && *p != '\r')
        word += (char)std::tolower((unsigned char)*p++);
    while (*p == ' ' || *p == '\t' || *p == '\r')
        p++;
    if (word == "nosource" && *p == 0)
        r.nosource = true;
    else if (!word.empty() || *p) {
        err = fmt("file %s: invalid rule on line %d", path, lineno);
        return false;
    }
    return true;
}

// Runs of digits in t[from, to): the n-th (from 1), or -1.
long nth_number(const std::string &t, size_t from, size_t to, int n)
{
    int seen = 0;
    for (size_t i = from; i < to;) {
        if (!std::isdigit((unsigned char)t[i])) {
            i++;
            continue;
        }
        long v = 0;
        size_t j = i;
        while (j < to && std::isdigit((unsigned char)t[j])) {
            if (v < 100000000000L)
                v = v * 10 + (t[j] - '0');
            j++;
        }
        if (++seen == n)
            return v;
        i = j;
    }
    return -1;
}

std::string trim_name(std::string s)
{
    const char *cut = " \t\"'`:,()[]<>";
    size_t a = s.find_first_not_of(cut);
    if (a == std::string::npos)
        return "";
    size_t b = s.find_last_not_of(cut);
    return s.substr(a, b - a + 1);
}

// The whole chain of a rule against a line.
bool chain(const tl_rule &r, const std::string &text, tl_hit &hit)
{
    if (r.pats.empty())
        return false;
    const xfre_engine &re = xfre_legacy();
    size_t from = 0, before = 0, mstart = 0;
    std::string name;
    bool grouped = false;
    for (size_t k = 0; k < r.pats.size(); k++) {
        if (re.compile(r.pats[k], true, false))
            return false;
        re.reset(true);
        int32_t at = re.execute(text.data(), (int32_t)text.size(), (int32_t)from, true);
        if (at < 0)
            return false;
        int32_t s, len;
        re.last_match(s, len);
        // The file of a nosource rule: the first group of the chain, else
        // what the first pattern matched.
        int32_t gs, gl;
        if (r.nosource && !grouped && re.group(1, gs, gl) && gl > 0) {
            name = text.substr((size_t)gs, (size_t)gl);
            grouped = true;
        } else if (r.nosource && k == 0) {
            name = trim_name(text.substr((size_t)s, (size_t)len));
        }
        before = from;
        mstart = (size_t)s;
        from = (size_t)s + (size_t)len;
    }
    hit = tl_hit{};
    hit.file = name;
    // A compiler's banner names no position.
    if (r.type == "compile" || text.compare(0, 8, "1501-511") == 0)
        return true;
    hit.line = r.offset == 0 ? nth_number(text, before, mstart, 1) : nth_number(text, from, text.size(), r.offset);
    return true;
}

} // namespace

int tl_rules_read(const std::string &path, std::vector<tl_rule> &rules, std::string &err, std::string &detail)
{
    // A folder by that name opens but reads nothing: it is no rule file.
    struct stat st;
    if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        return 1;
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return 1;
    err.clear();
    detail.clear();
    std::vector<tl_rule> got;
    std::string l;
    int lineno = 0;
    while (std::getline(in, l)) {
        lineno++;
        if (!l.empty() && l.back() == '\r')
            l.pop_back();
        if (l.empty() || l[0] == '#' || l[0] == '*' || blank_line(l))
            continue;
        if (l[0] == ' ' || l[0] == '\t') {
            if (got.empty()) {
                err = fmt("file %s: invalid filetype on line %d", path, lineno);
                return 2;
            }
            std::string pat = l.substr(1);
            if (const char *e = xfre_legacy().compile(pat, true, false)) {
                err = fmt("file %s: syntax error on rule line %d", path, lineno);
                detail = e;
                rules.clear();
                return 2;
            }
            got.back().pats.push_back(pat);
            continue;
        }
        tl_rule r;
        if (!read_head(l, path, lineno, r, err))
            return 2;
        got.push_back(r);
    }
    rules = std::move(got);
    return 0;
}

std::vector<std::string> tl_rules_places(const std::string &home, const std::string &xhome)
{
    std::string h = home.empty() || home.back() == '/' ? home : home + "/";
    std::string x = xhome.empty() || xhome.back() == '/' ? xhome : xhome + "/";
    std::vector<std::string> v = {"vorta_compile.rules"};
    if (!h.empty())
        v.push_back(h + "vorta_compile.rules");
    // The program's home holds its shipped data under share/vorta, installed
    // beside bin/ or copied into the build folder.
    for (const char *sub : {"", "share/vorta/", "../share/vorta/"})
        if (!x.empty())
            v.push_back(x + sub + "vorta_compile.rules");
    return v;
}

bool tl_rules_match(const std::vector<tl_rule> &rules, const std::string &type, const std::string &text, tl_hit &hit)
{
    for (const tl_rule &r : rules)
        if (r.type == type && chain(r, text, hit))
            return true;
    return false;
}

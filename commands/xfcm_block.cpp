// Block line operations: DELete, COpy, MOve, DUPlicat, SHift, UPPercas,
// LOWercas and MErge, and the line services behind them that the prefix
// commands call too (delete, copy out, insert, duplicate, shift, fold).
//
// A command's lines are the lines in scope within its range (every line
// under SCOPE ALL): hidden lines between them are neither touched nor
// moved. Every change goes through xf_do, so that a command is one undo
// step; a command that fails checks everything before its first change.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "rexx/run.h"
#include "session/xed.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

// ---------------------------------------------------------------------------
// Targets of the block commands.

int xftarget_count(std::string_view &text, int64_t &count)
{
    text = xftrim(text);
    if (text.empty()) {
        count = 1;
        return 0;
    }
    size_t len = xftarget_scan(text);
    int r = xftarget_parse(text.substr(0, len), false, true);
    text = xftrim(text.substr(len));
    if (r < -1)
        return r;
    count = (int64_t)r - curline();
    return 0;
}

int xftarget_forward(std::string_view &text, int64_t &count)
{
    int r = xftarget_count(text, count);
    if (r == 0 && count < 0) {
        xfmsg(168, 1);
        return -3;
    }
    return r;
}

bool xfcount_range(int64_t count, int32_t &first, int64_t &n)
{
    int32_t cur = curline();
    if (count >= 0) {
        first = cur;
        n = count;
    } else {
        first = (int32_t)(cur + count + 1);
        n = -count;
    }
    // The top of the file is no line: the range starts at line 0, one fewer.
    if (first < 0) {
        n += first;
        first = 0;
    }
    n = std::max<int64_t>(0, std::min<int64_t>(n, (int64_t)nbli() - first));
    return n > 0;
}

// ---------------------------------------------------------------------------
// Line services.

namespace {

bool walked(int32_t li) { return xv->scope == 1 || xfinscope(li); }

// Runs of lines in scope within [first, first+n), last run first, so that
// deleting one run leaves the indexes of the runs before it alone.
template <class F> void each_run_back(int32_t first, int64_t n, F f)
{
    int32_t li = (int32_t)std::min<int64_t>(first + n, nbli()) - 1;
    while (li >= first) {
        while (li >= first && !walked(li))
            li--;
        int32_t end = li;
        while (li >= first && walked(li))
            li--;
        if (end > li)
            f(li + 1, end - li);
    }
}

// Each line in scope of n lines from li (li -1 counts one fewer from 0).
template <class F> void each_walked(int32_t li, int64_t n, F f)
{
    if (li < 0) {
        n += li;
        li = 0;
    }
    int32_t end = (int32_t)std::min<int64_t>(li + n, nbli());
    for (int32_t k = li; k < end; k++)
        if (walked(k))
            f(k);
}

// Whether a new file may take the name; message 182 when not. Whatever
// stands under the name, a link to nowhere included, is no place for a new
// file: its text would land where the link points.
bool name_free(const std::string &path)
{
    struct stat st;
    if (lstat(path.c_str(), &st) != 0)
        return true;
    xfmsg(182, 1);
    cmd_rc = 1;
    return false;
}

xfline copy_line(const xfline &l)
{
    xfline c((char *)xfmalloc((size_t)l.len + 1), l.len, 0, l.selevel);
    std::memcpy(c.text, l.text, (size_t)l.len);
    c.text[l.len] = 0;
    return c;
}

} // namespace

int64_t xfdel(int32_t li, int64_t n, const char *tag)
{
    if (li < 0) {
        n += li;
        li = 0;
    }
    int64_t done = 0;
    each_run_back(li, n, [&](int32_t a, int32_t k) {
        xf_do('D', nullptr, a, k, 1, nullptr, tag);
        xfshift_up(a, k, a);
        done += k;
    });
    return done;
}

std::vector<xfline> xfcopy_out(int32_t li, int64_t n)
{
    std::vector<xfline> out;
    each_walked(li, n, [&](int32_t k) { out.push_back(copy_line(xf->lines[k])); });
    return out;
}

bool xfwrite_block(const std::string &path, bool create, int32_t li, int64_t n)
{
    if (create && !name_free(path))
        return false;
    std::vector<int32_t> only;
    each_walked(li, n, [&](int32_t k) { only.push_back(k); });
    // The save's own writer: a new file beside the old that takes its name
    // only when complete, the old file's mode and owner kept.
    if (xfsave(path, true, false, false, false, true, &only) != 0)
        return false;
    xfmsgs("..... " + path.substr(path.rfind('/') + 1) + (create ? " created" : " replaced"), 0);
    cmd_rc = 0;
    return true;
}

void xfinsert_lines(int32_t after, std::vector<xfline> &lines, const char *tag)
{
    if (lines.empty())
        return;
    int32_t n = (int32_t)lines.size();
    xf_do('I', nullptr, after, n, 1, lines.data(), tag);
    xfshift_down(after, n);
    lines.clear();
}

void xfdup(int32_t li, int32_t times)
{
    if (times <= 0)
        return;
    std::vector<xfline> v((size_t)times);
    for (auto &l : v)
        l = li < 0 ? copy_line(xfline{const_cast<char *>(" "), 1, 0, 0}) : copy_line(xf->lines[li]);
    xfinsert_lines(li, v, "xfdup:38");
}

namespace {

// The byte where a shift starts in a line: the zone's left column, or the
// first blank when a label in the first word is to stay.
int32_t shift_start(int32_t li, bool keep_label)
{
    const xfline &l = xf->lines[li];
    int32_t zl, zr;
    xfzone_bytes(li, zl, zr);
    if (keep_label) {
        const char *b = (const char *)std::memchr(l.text, ' ', (size_t)l.len);
        zl = std::max<int32_t>(zl, b ? (int32_t)(b - l.text) : l.len);
    }
    return zl;
}

bool one_blank(const xfline &l) { return l.len == 1 && l.text[0] == ' '; }

} // namespace

int64_t xfshr(int32_t a, int32_t b, int32_t n, bool keep_label)
{
    int64_t changed = 0;
    std::string t;
    for (int32_t li = std::max(0, a); li <= b && li < nbli(); li++) {
        const xfline &l = xf->lines[li];
        if (!walked(li) || one_blank(l))
            continue;
        int32_t at = shift_start(li, keep_label);
        if (at >= l.len)
            continue; // a line that ends before the column stays
        t.assign(l.text, (size_t)at);
        t.append((size_t)n, ' ');
        t.append(l.text + at, (size_t)(l.len - at));
        xf_do('r', t, li, "xfshr:56");
        changed++;
    }
    return changed;
}

int64_t xfshl(int32_t a, int32_t b, int32_t n, bool keep_label)
{
    int64_t changed = 0;
    std::string t;
    for (int32_t li = std::max(0, a); li <= b && li < nbli(); li++) {
        const xfline &l = xf->lines[li];
        if (!walked(li) || one_blank(l))
            continue;
        int32_t at = shift_start(li, keep_label);
        if (at >= l.len)
            continue;
        // Whatever stands in the n columns goes, blank or not.
        int32_t cut = at + xfcol_off(l.text + at, l.len - at, n, xf->utf8);
        t.assign(l.text, (size_t)at);
        t.append(l.text + std::min<int32_t>(cut, l.len), (size_t)(l.len - std::min<int32_t>(cut, l.len)));
        if (!xf->keepblanks)
            while (!t.empty() && t.back() == ' ')
                t.pop_back();
        if (t.empty())
            t = " ";
        xf_do('r', t, li, "xfshl:63");
        changed++;
    }
    return changed;
}

namespace {

// Folds a byte string in place; false when nothing changed. In a UTF-8
// file the Latin-1 letters (two bytes behind 0xC3) fold as well, in any
// other file the Latin-1 bytes themselves.
bool fold(std::string &t, size_t from, size_t to, bool upper)
{
    bool any = false;
    bool utf8 = xf->utf8 != 0;
    for (size_t i = from; i < to; i++) {
        auto c = (unsigned char)t[i];
        unsigned char o = c;
        if (upper && c >= 'a' && c <= 'z')
            o = (unsigned char)(c - 32);
        else if (!upper && c >= 'A' && c <= 'Z')
            o = (unsigned char)(c + 32);
        else if (utf8 && c == 0xC3 && i + 1 < to) {
            auto d = (unsigned char)t[++i];
            unsigned char e = d;
            if (upper && d >= 0xA0 && d <= 0xBE && d != 0xB7)
                e = (unsigned char)(d - 32);
            else if (!upper && d >= 0x80 && d <= 0x9E && d != 0x97)
                e = (unsigned char)(d + 32);
            if (e != d) {
                t[i] = (char)e;
                any = true;
            }
            continue;
        } else if (!utf8 && upper && c >= 0xE0 && c <= 0xFE && c != 0xF7)
            o = (unsigned char)(c - 32);
        else if (!utf8 && !upper && c >= 0xC0 && c <= 0xDE && c != 0xD7)
            o = (unsigned char)(c + 32);
        if (o != c) {
            t[i] = (char)o;
            any = true;
        }
    }
    return any;
}

} // namespace

bool xfcase_text(std::string &t, size_t from, size_t to, bool upper) { return fold(t, from, to, upper); }

int64_t xfcase_lines(int32_t a, int32_t b, bool upper)
{
    int64_t changed = 0;
    std::string t;
    for (int32_t li = std::max(0, a); li <= b && li < nbli(); li++) {
        if (!walked(li))
            continue;
        const xfline &l = xf->lines[li];
        int32_t zl, zr;
        xfzone_bytes(li, zl, zr);
        t.assign(l.text, (size_t)l.len);
        if (fold(t, (size_t)std::min<int32_t>(zl, l.len), (size_t)std::min<int32_t>(zr, l.len), upper)) {
            xf_do('r', t, li, upper ? "xfcm_upper:41" : "xfcm_lower:41");
            changed++;
        }
    }
    return changed;
}

// ---------------------------------------------------------------------------
// The commands.

namespace {

int fail(int msg, int rc)
{
    if (msg)
        xfmsg(msg, 1);
    cmd_rc = rc;
    return 1;
}

// A target helper's failure as a return code: -2 not found, -3 invalid.
int target_fail(int r) { return fail(0, r == -2 ? 2 : 5); }

void lines_message(int64_t n, const char *what)
{
    char buf[64];
    if (n == 1)
        std::snprintf(buf, sizeof buf, " ..... 1 line %s", what);
    else
        std::snprintf(buf, sizeof buf, " ..... %lld lines %s", (long long)n, what);
    xfmsgs(buf, 0);
}

// The operands of a command that takes a target alone: its count and its
// lines. False when the command is over (failed, with cmd_rc set).
// The target that ends a command's operands: its lines, `some` false when
// it names none. False with the message given when it is wrong or followed
// by anything.
bool target_last(std::string_view rest, int64_t &count, int32_t &first, int64_t &n, bool &some)
{
    if (int r = xftarget_count(rest, count)) {
        target_fail(r);
        return false;
    }
    if (!rest.empty()) {
        fail(16, 5);
        return false;
    }
    some = xfcount_range(count, first, n);
    cmd_rc = 0;
    return true;
}

bool target_alone(const xfcmd &c, int64_t &count, int32_t &first, int64_t &n, bool &some)
{
    return target_last(c.ops(), count, first, n, some);
}

// The destination of COpy, MOve and MErge: the line a target names,
// relative to the current line.
int destination(std::string_view &rest, int32_t &dest)
{
    rest = xftrim(rest);
    if (rest.empty())
        return fail(159, 5), -3;
    size_t len = xftarget_scan(rest);
    int r = xftarget_parse(rest.substr(0, len), false, true);
    rest = xftrim(rest.substr(len));
    if (r < -1)
        return target_fail(r), r;
    dest = r;
    return 0;
}

int copy_or_move(const xfcmd &c, bool move)
{
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    int64_t count;
    if (int r = xftarget_count(rest, count))
        return target_fail(r);
    int32_t dest;
    if (destination(rest, dest))
        return 1;
    if (!rest.empty())
        return fail(16, 5);
    int32_t first;
    int64_t n;
    xfcount_range(count, first, n);
    dest = std::clamp(dest, topline, std::max(topline, nbli() - 1));
    // Moving a block into itself has no meaning; copying into it does.
    if (move && n > 0 && dest >= first && dest < first + n - 1)
        return fail(16, 5);
    std::vector<xfline> lines = xfcopy_out(first, n);
    int64_t k = (int64_t)lines.size();
    if (move && k > 0) {
        // Lines taken from above the destination bring it up.
        int64_t above = 0;
        for (int32_t li = first; li < first + n && li <= dest; li++)
            above += walked(li);
        xfdel(first, n, "xfdel:24");
        dest -= (int32_t)above;
    }
    xfinsert_lines(dest, lines, move ? "xfcm_move:88" : "xfcm_copy:88");
    if (k > 0)
        curline() = (int32_t)std::min<int64_t>(dest + k, nbli() - 1);
    lines_message(k, move ? "moved" : "copied");
    cmd_rc = 0;
    return 1;
}

} // namespace

xfparked pdf_parked;

int xfcm_copy(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdfcopy(c) : xfcm_xedcopy(c);
}

// PDFCOpy file [AFTER|BEFORE label]: another file's lines, placed at the
// label at once, or else kept until an A or B in the prefix area says where.
int xfcm_pdfcopy(const xfcmd &c)
{
    xftrace("Commande xfcm_pdfcopy");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    std::string name(xfword(rest));
    std::string where = xffold(xfword(rest));
    std::string_view label = xfword(rest);
    long first = 1, count = -1;
    if (name.empty()) {
        int asked = xfask_copy(name, first, count);
        if (asked < 0)
            return fail(159, 5);
        if (asked == 0)
            return 1;
    }
    bool after = !where.empty() && abbrev(where, "after", 1);
    bool before = !where.empty() && abbrev(where, "before", 1);
    if (!xftrim(rest).empty() || (!where.empty() && !after && !before) || (where.empty() != label.empty()))
        return fail(16, 5);
    int point = -1;
    if (!label.empty() && (point = xfpoint_find(label)) < 0)
        return fail(178, 5);
    std::vector<xfline> lines;
    if (!xfread_file_lines(name, first, count, lines)) {
        cmd_rc = 1;
        return 1;
    }
    if (point >= 0) {
        int32_t li = xf->points[(size_t)point].li;
        xfinsert_lines(after ? li : li - 1, lines, "xfcm_pdfcopy");
        cmd_rc = 0;
        return 1;
    }
    pdf_parked = xfparked{PARK_COPY, {}, {}};
    for (auto &l : lines) {
        pdf_parked.lines.emplace_back(l.text, (size_t)l.len);
        xftext_free(l.text);
    }
    xfmsg(177, 0);
    cmd_rc = 0;
    return 1;
}

namespace {

// CREAte and REPlace: file [label label]. With two labels their lines are
// written at once; otherwise the file waits for a CC or MM block, and a
// block already waiting is taken at once.
int write_to_file(const xfcmd &c, int kind)
{
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    std::string name(xfword(rest));
    std::string_view from = xfword(rest), to = xfword(rest);
    if (name.empty()) {
        int asked = xfask_target(kind == PARK_CREATE, name);
        if (asked < 0)
            return fail(159, 5);
        if (asked == 0)
            return 1;
    }
    if (!xftrim(rest).empty() || from.empty() != to.empty())
        return fail(16, 5);
    int a = from.empty() ? -1 : xfpoint_find(from), b = to.empty() ? -1 : xfpoint_find(to);
    if (!from.empty() && (a < 0 || b < 0))
        return fail(178, 5);
    std::string path = xfpath_of(name);
    if (kind == PARK_CREATE && !name_free(path))
        return 1;
    if (a >= 0) {
        int32_t lo = xf->points[(size_t)a].li, hi = xf->points[(size_t)b].li;
        if (lo > hi)
            std::swap(lo, hi);
        xfwrite_block(path, kind == PARK_CREATE, lo, (int64_t)hi - lo + 1);
        return 1;
    }
    pdf_parked = xfparked{kind, {}, path};
    xfmsg(kind == PARK_CREATE ? 183 : 185, 0);
    cmd_rc = 0;
    xfpfx_take_parked();
    return 1;
}

} // namespace

int xfcm_create(const xfcmd &c)
{
    xftrace("Commande xfcm_create");
    return write_to_file(c, PARK_CREATE);
}

int xfcm_pdfreplace(const xfcmd &c)
{
    xftrace("Commande xfcm_pdfreplace");
    return write_to_file(c, PARK_REPLACE);
}

int xfcm_xedcopy(const xfcmd &c)
{
    xftrace("Commande xfcm_copy");
    return copy_or_move(c, false);
}

int xfcm_move(const xfcmd &c)
{
    xftrace("Commande xfcm_move");
    return copy_or_move(c, true);
}

int xfcm_delete(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdfdelete(c) : xfcm_xeddelete(c);
}

// DELete [target]: the line that followed the block becomes current.
int xfcm_xeddelete(const xfcmd &c)
{
    xftrace("Commande xfcm_delete");
    if (!xf)
        return 1;
    int64_t count, n;
    int32_t first;
    bool some;
    if (!target_alone(c, count, first, n, some))
        return 1;
    if (some) {
        xfdel(first, n, "xfdel:24");
        curline() = std::min(first, std::max(topline, nbli() - 1));
        if (first >= nbli())
            curline() = nbli() > 0 ? nbli() - 1 : topline;
    }
    cmd_rc = 0;
    return 1;
}

// DUPlicat [n [target]]: n copies of the block after its last line.
int xfcm_duplicat(const xfcmd &c)
{
    xftrace("Commande xfcm_dupli");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    long times = 1;
    if (!w.empty() && (!xfnumber(w, times) || times < 0))
        return fail(16, 5);
    int64_t count, n;
    int32_t first;
    bool some;
    if (!target_last(rest, count, first, n, some))
        return 1;
    if (!some || times == 0)
        return 1;
    std::vector<xfline> one = xfcopy_out(first, n);
    if ((int64_t)one.size() * times + nbli() > xfmax_lines) {
        for (auto &l : one)
            xftext_free(l.text);
        return fail(16, 5);
    }
    int32_t last = (int32_t)(first + n - 1);
    std::vector<xfline> all;
    all.reserve(one.size() * (size_t)times);
    for (long t = 0; t < times; t++)
        for (auto &l : one)
            all.push_back(t + 1 < times ? copy_line(l) : l);
    size_t k = all.size();
    xfinsert_lines(last, all, "xfcm_dupli:77");
    if (k > 0 && !stay_on)
        curline() = last + (int32_t)k;
    cmd_rc = 0;
    return 1;
}

// SHift Left|Right [n [target]]
int xfcm_shift(const xfcmd &c)
{
    xftrace("Commande xfcm_shift");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty())
        return fail(159, 5);
    std::string lw = xffold(w);
    bool right = abbrev(lw, "right", 1);
    if (!right && !abbrev(lw, "left", 1)) {
        xfmsgs("..... Invalid Operand: \"" + std::string(w) + "\"", 1);
        cmd_rc = 5;
        return 1;
    }
    std::string_view nw = xfword(rest);
    long n = 1;
    if (!nw.empty() && (!xfnumber(nw, n) || n < 0 || n > xfmax_cols))
        return fail(16, 5);
    int64_t count, k;
    int32_t first;
    bool some;
    if (!target_last(rest, count, first, k, some))
        return 1;
    if (!some || n == 0)
        return 1;
    int32_t last = (int32_t)(first + k - 1);
    if (right) {
        // Refused before any line changes when one would pass the limit.
        for (int32_t li = first; li <= last; li++)
            if ((int64_t)xf->lines[li].len + n > xfmax_cols)
                return fail(16, 5);
        xfshr(first, last, (int32_t)n, false);
    } else {
        xfshl(first, last, (int32_t)n, false);
    }
    if (!stay_on)
        curline() = count < 0 ? first : last;
    cmd_rc = 0;
    return 1;
}

namespace {

int change_case(const xfcmd &c, bool upper)
{
    if (!xf)
        return 1;
    int64_t count, n;
    int32_t first;
    bool some;
    if (!target_alone(c, count, first, n, some))
        return 1;
    if (some) {
        int32_t last = (int32_t)(first + n - 1);
        xfcase_lines(first, last, upper);
        if (!stay_on)
            curline() = count < 0 ? first : last;
    }
    cmd_rc = 0;
    return 1;
}

} // namespace

int xfcm_uppercas(const xfcmd &c)
{
    xftrace("Commande xfcm_upper");
    return change_case(c, true);
}

int xfcm_lowercas(const xfcmd &c)
{
    xftrace("Commande xfcm_lower");
    return change_case(c, false);
}

// MErge target1 target2 [col]: each source line laid over a destination
// line, the destination's characters showing through the source's blanks.
int xfcm_merge(const xfcmd &c)
{
    xftrace("Commande xfcm_merge");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    int64_t count;
    if (int r = xftarget_count(rest, count))
        return target_fail(r);
    int32_t dest;
    if (destination(rest, dest))
        return 1;
    std::string_view cw = xfword(rest);
    long col = 1;
    if (!cw.empty() && (!xfnumber(cw, col) || col < 1 || col > xfmax_cols))
        return fail(16, 5);
    if (!rest.empty())
        return fail(16, 5);
    int32_t first;
    int64_t n;
    if (!xfcount_range(count, first, n)) {
        xfmsg(171, 0);
        cmd_rc = 0;
        return 1;
    }
    dest = std::max(0, dest);
    int64_t last = first + n - 1, dlast = dest + n - 1;
    if (dest <= last && first <= dlast) {
        char buf[96];
        std::snprintf(buf, sizeof buf, "..... Overlapping [%d-%lld] [%d-%lld] areas.", first + 1,
                      (long long)last + 1, dest + 1, (long long)dlast + 1);
        xfmsgs(buf, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string t;
    int64_t merged = 0;
    for (int64_t i = 0; i < n; i++) {
        const xfline &s = xf->lines[(int32_t)(first + i)];
        t.assign((size_t)(col - 1), ' ');
        t.append(s.text, (size_t)s.len);
        int32_t d = (int32_t)(dest + i);
        if (d >= nbli()) {
            xf_do('i', t, nbli() - 1, "xfcm_merge:135");
        } else {
            const xfline &l = xf->lines[d];
            if ((size_t)l.len > t.size())
                t.resize((size_t)l.len, ' ');
            for (int32_t k = 0; k < l.len; k++)
                if (t[(size_t)k] == ' ')
                    t[(size_t)k] = l.text[k];
            xf_do('r', t, d, "xfcm_merge:135");
        }
        merged++;
    }
    xf_do('D', nullptr, first, (int32_t)n, 1, nullptr, "xfcm_merge:135");
    xfshift_up(first, (int32_t)n, first);
    curline() = dest > first ? (int32_t)(dest - n) : dest;
    xfclampcur();
    if (merged == 1)
        xfmsgs("1 line merged", 0);
    else {
        char buf[48];
        std::snprintf(buf, sizeof buf, "%lld lines merged", (long long)merged);
        xfmsgs(buf, 0);
    }
    cmd_rc = 0;
    return 1;
}

// The panel-style DELETE: [ALL] [X|NX] [.a .b | n]. ALL takes the whole
// file (or the labels' range), X the hidden lines only, NX the shown only.
int xfcm_pdfdelete(const xfcmd &c)
{
    xftrace("Commande xfcm_pdfdelete");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    bool all = false;
    int which = 0; // 0 every line, 1 hidden only, 2 shown only
    std::vector<std::string_view> labels;
    long count = 1;
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        std::string lw = xffold(w);
        if (lw == "all")
            all = true;
        else if (lw == "x")
            which = 1;
        else if (lw == "nx")
            which = 2;
        else if (w[0] == '.' && xfpoint_find(w) >= 0)
            labels.push_back(w);
        else if (!xfnumber(w, count) || count < 0)
            return fail(16, 12);
    }
    if (labels.size() == 1 || labels.size() > 2)
        return fail(16, 12);
    int32_t lo = std::max(0, curline()), hi = (int32_t)std::min<int64_t>((int64_t)lo + count, nbli()) - 1;
    if (labels.size() == 2) {
        int32_t a = xf->points[(size_t)xfpoint_find(labels[0])].li;
        int32_t b = xf->points[(size_t)xfpoint_find(labels[1])].li;
        lo = std::max(0, std::min(a, b));
        hi = std::max(a, b);
    } else if (all) {
        lo = 0;
        hi = nbli() - 1;
    }
    // The deletion walks runs of the lines asked for, from the end.
    int64_t done = 0;
    for (int32_t li = std::min(hi, nbli() - 1); li >= lo;) {
        auto wanted = [&](int32_t k) { return which == 0 || xfinscope(k) == (which == 2); };
        while (li >= lo && !wanted(li))
            li--;
        int32_t end = li;
        while (li >= lo && wanted(li))
            li--;
        if (end > li) {
            xf_do('D', nullptr, li + 1, end - li, 1, nullptr, "xfddel1:51");
            xfshift_up(li + 1, end - li, li + 1);
            done += end - li;
        }
    }
    char buf[64];
    std::snprintf(buf, sizeof buf, done == 1 ? "%lld line deleted" : "%lld lines deleted", (long long)done);
    xfmsgs(buf, 0);
    cmd_rc = 0;
    return 1;
}

namespace {

int repeat_depth = 0; // REPEats running, each one history entry further back

// The next line in scope from li in the direction; false at either end.
bool step(int32_t &li, int dir)
{
    for (int32_t k = li + dir; k >= 0 && k < nbli(); k += dir)
        if (walked(k)) {
            li = k;
            return true;
        }
    return false;
}

} // namespace

// REPEat [target]: the command before this one, once per line of the
// target, each time on the next line.
int xfcm_repeat(const xfcmd &c)
{
    xftrace("Commande xfcm_repeat");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    int64_t count;
    if (int r = xftarget_count(rest, count))
        return target_fail(r);
    if (!rest.empty())
        return fail(16, 5);
    // A REPEat typed on the command line is the newest entry itself.
    size_t back = (size_t)repeat_depth;
    std::string cmd;
    if (xfhist_get(back, cmd) && xftrim(cmd) == xftrim(c.line))
        back++;
    if (!xfhist_get(back, cmd))
        return fail(180, 1);
    int dir = count < 0 ? -1 : 1;
    cmd_rc = 0;
    repeat_depth++;
    for (int64_t k = 0; k < (count < 0 ? -count : count); k++) {
        int32_t li = curline();
        if (!step(li, dir))
            break;
        curline() = li;
        // Straight to the interpreter: the runs stay one undo step.
        xfcom2(cmd, c.ctx1, c.ctx2);
        if (cmd_rc != 0 || !xf)
            break;
    }
    repeat_depth--;
    return 1;
}

// STAck [target [col [len]]]: the lines, or a part of each, queued on the
// macros' stack in their order.
int xfcm_stack(const xfcmd &c)
{
    xftrace("Commande xfcm_stack");
    if (!xf)
        return 1;
    std::string_view rest = c.ops();
    int64_t count;
    if (int r = xftarget_count(rest, count))
        return target_fail(r);
    long col = 1, len = -1;
    std::string_view cw = xfword(rest), lw = xfword(rest);
    auto bad = [](std::string_view w) {
        xfmsgs("..... Invalid Operand: \"" + std::string(w) + "\"", 1);
        cmd_rc = 5;
        return 1;
    };
    if (!cw.empty() && cw != "*" && (!xfnumber(cw, col) || col < 1))
        return bad(cw);
    if (!lw.empty() && lw != "*" && (!xfnumber(lw, len) || len < 0))
        return bad(lw);
    if (!xftrim(rest).empty())
        return fail(16, 5);
    cmd_rc = 0;
    if (count == 0) {
        rx_stack_queue("");
        return 1;
    }
    int32_t first;
    int64_t n;
    if (!xfcount_range(count, first, n))
        return 1;
    std::vector<int32_t> lines;
    for (int32_t li = first; li < first + n; li++)
        if (walked(li))
            lines.push_back(li);
    if (count < 0)
        std::reverse(lines.begin(), lines.end());
    for (int32_t li : lines) {
        const xfline &l = xf->lines[li];
        int32_t end = l.len;
        if (xf->trunc > 0)
            end = std::min(end, xfcol_off(l.text, l.len, xf->trunc, xf->utf8));
        int32_t a = std::min(end, xfcol_off(l.text, l.len, (int32_t)col - 1, xf->utf8));
        int32_t b = len < 0 ? end : std::min(end, a + xfcol_off(l.text + a, l.len - a, (int32_t)len, xf->utf8));
        rx_stack_queue(std::string_view(l.text + a, (size_t)(b - a)));
    }
    return 1;
}

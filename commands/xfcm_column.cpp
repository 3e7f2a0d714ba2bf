// The column commands: a column pointer in the current line, and edits at
// it. CLocate moves the pointer (to a column, by a count, or to a string
// further right, on this line or a later one), CDElete removes the text
// from the pointer up to the same kinds of target, CInsert, COVerlay and
// CReplace write at the pointer, CAppend behind the line's end, and CFirst
// and CLAst put the pointer at the zone's left column or behind the line's
// last character.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>

namespace {

int32_t &pointer() { return xv->perfile[(size_t)xfidx].colptr; }
const int32_t *zone() { return xv->perfile[(size_t)xfidx].zone; }

// The pointer as a column from 0: where the zone starts until it is set.
int32_t pointer_col() { return (pointer() > 0 ? pointer() : std::max(1, zone()[0])) - 1; }
void set_pointer(int32_t col0) { pointer() = col0 + 1; }

// The zone's last column from 0, or the largest column for "to the end".
int32_t zone_right() { return zone()[1] > 0 ? zone()[1] - 1 : 2147483646; }

int refuse(int msg, int rc)
{
    xfmsg(msg, 1);
    cmd_rc = rc;
    return 1;
}

// The current line, or -1 with a message when it is no line of text.
int32_t text_line()
{
    int32_t li = curline();
    if (li < 0 || li >= nbli()) {
        refuse(145, 1); // "Invalid current line"
        return -1;
    }
    return li;
}

std::string line_text(int32_t li) { return std::string(xf->lines[li].text, (size_t)xf->lines[li].len); }
int32_t columns(const std::string &s) { return xfcol_len(s.data(), (int32_t)s.size(), xf->utf8); }
size_t offset(const std::string &s, int32_t col)
{
    return (size_t)xfcol_off(s.data(), (int32_t)s.size(), col, xf->utf8);
}

// A line padded with blanks to reach column `col` (from 0).
void pad_to(std::string &s, int32_t col)
{
    int32_t have = columns(s);
    if (have < col)
        s.append((size_t)(col - have), ' ');
}

// A column target: `:n` a column, `+n`/`-n`/`n` a count of columns, `*`
// the zone's end and `-*` its start, or a string (any delimiter, `-` before
// it to look left). On success the target column (from 0) and, for a
// string found on a later line, that line.
enum { T_OK = 0, T_NOTFOUND = 2, T_BAD = 5 };
int column_target(std::string_view t, int32_t li, int32_t from, int32_t &col, int32_t &line)
{
    t = xftrim(t);
    line = li;
    if (t.empty())
        t = "1";
    long n;
    if (t == "*" || t == "-*") {
        col = t[0] == '*' ? std::min(zone_right() + 1, columns(line_text(li))) : std::max(1, zone()[0]) - 1;
        return T_OK;
    }
    if (t[0] == ':') {
        if (!xfnumber(t.substr(1), n) || n < 1)
            return T_BAD;
        col = (int32_t)n - 1;
        return T_OK;
    }
    bool sign = t[0] == '+' || t[0] == '-';
    if (xfnumber(sign ? t.substr(1) : t, n)) {
        col = (int32_t)std::max<long>(0, from + (t[0] == '-' ? -n : n));
        return T_OK;
    }
    bool back = t[0] == '-';
    std::string_view body = back ? t.substr(1) : t;
    if (body.size() < 2 || std::isalnum((unsigned char)body[0]))
        return T_BAD;
    char d = body[0];
    size_t end = body.find(d, 1);
    std::string s(body.substr(1, end == std::string_view::npos ? std::string_view::npos : end - 1));
    if (s.empty())
        return T_BAD;
    xfpat p;
    if (!xfpat_init(p, s, xf->case_mode == 0 || xf->case_mode == 2, false, false))
        return T_BAD;
    // Further right on this line first, then on the lines below (or above).
    for (int32_t k = li; k >= 0 && k < nbli(); k += back ? -1 : 1) {
        if (k != li && !xfinscope(k))
            continue;
        const xfline &l = xf->lines[k];
        int32_t zl, zr, ms, me;
        xfzone_bytes(k, zl, zr);
        bool hit;
        if (back) {
            int32_t limit = k == li ? std::min(zr, xfcol_off(l.text, l.len, from, xf->utf8)) : zr;
            hit = xfpat_find_back(p, l.text, l.len, zl, limit, limit, ms, me);
        } else {
            int32_t start = k == li ? xfcol_off(l.text, l.len, from + 1, xf->utf8) : zl;
            hit = xfpat_find(p, l.text, l.len, zl, zr, std::max(start, zl), ms, me);
        }
        if (hit) {
            line = k;
            col = xfcol_at(l.text, l.len, ms, xf->utf8);
            return T_OK;
        }
    }
    return T_NOTFOUND;
}

// Stores a changed line; as with CHANGE, trailing blanks go unless
// KEEPBlanks, and an empty line is one blank.
void store(int32_t li, std::string t, const char *tag)
{
    if (!xf->keepblanks)
        while (!t.empty() && t.back() == ' ')
            t.pop_back();
    if (t.empty())
        t = " ";
    if (t != line_text(li))
        xf_do('r', t, li, tag);
}

int target_failed(int r)
{
    return r == T_NOTFOUND ? refuse(165, 2) : refuse(163, 5);
}

// CLocate and CDElete share the target; `del` removes what lies between.
int locate(const xfcmd &c, bool del)
{
    if (!xf)
        return 1;
    int32_t li = text_line();
    if (li < 0)
        return 1;
    int32_t from = pointer_col(), col, line;
    int r = column_target(c.ops(), li, from, col, line);
    if (r != T_OK)
        return target_failed(r);
    if (!del) {
        if (line != li)
            curline() = line;
        set_pointer(col);
        return 1;
    }
    if (line != li)
        return refuse(25, 1); // "No locate across lines"
    std::string t = line_text(li);
    int32_t a = std::min(from, col), b = std::max(from, col);
    size_t oa = offset(t, a), ob = offset(t, b);
    if (oa < t.size()) {
        t.erase(oa, std::min(t.size(), ob) - oa);
        store(li, t, "xfcm_cdelete");
    }
    set_pointer(a);
    return 1;
}

// Writes `text` at the pointer: inserted, replacing as many columns, or
// laid over them (a blank keeps what is under it, `_` puts a blank).
enum write_kind { INSERT, REPLACE, OVERLAY };
int write_at(const xfcmd &c, write_kind how)
{
    if (!xf)
        return 1;
    std::string_view ops = c.ops();
    if (ops.empty())
        return refuse(159, 5); // "Missing Operand"
    int32_t li = text_line();
    if (li < 0)
        return 1;
    std::string t = line_text(li), w(ops);
    int32_t col = pointer_col(), n = columns(w);
    pad_to(t, how == INSERT ? col : col + (how == REPLACE ? 0 : n));
    size_t at = offset(t, col);
    if (how == INSERT) {
        t.insert(at, w);
    } else if (how == REPLACE) {
        size_t end = offset(t, col + n);
        t.replace(at, std::min(t.size(), end) - at, w);
    } else {
        std::string out = t.substr(0, at);
        size_t o = at, k = 0;
        for (int32_t i = 0; i < n; i++) {
            size_t next = (size_t)xfcol_off(t.data(), (int32_t)t.size(), col + i + 1, xf->utf8);
            size_t wk = (size_t)xfcol_off(w.data(), (int32_t)w.size(), i + 1, xf->utf8);
            std::string_view mine(w.data() + k, wk - k), under(t.data() + o, next - o);
            out += mine == " " ? std::string(under) : mine == "_" ? std::string(" ") : std::string(mine);
            o = next;
            k = wk;
        }
        t = out + t.substr(o);
    }
    store(li, t, "xfcm_cwrite");
    return 1;
}

} // namespace

int xfcm_clocate(const xfcmd &c)
{
    xftrace("Commande xfcm_clocate");
    // CDElete shares the handler: the command word tells them apart.
    bool del = c.typed >= 2 && (c.lline[1] | 0x20) == 'd';
    return locate(c, del);
}

int xfcm_cinsert(const xfcmd &c)
{
    xftrace("Commande xfcm_cinsert");
    return write_at(c, INSERT);
}

int xfcm_creplace(const xfcmd &c)
{
    xftrace("Commande xfcm_creplace");
    return write_at(c, REPLACE);
}

int xfcm_coverlay(const xfcmd &c)
{
    xftrace("Commande xfcm_coverlay");
    return write_at(c, OVERLAY);
}

int xfcm_cappend(const xfcmd &c)
{
    xftrace("Commande xfcm_cappend");
    if (!xf)
        return 1;
    int32_t li = text_line();
    if (li < 0)
        return 1;
    std::string t = line_text(li);
    if (t == " ")
        t.clear(); // an empty line is stored as one blank
    set_pointer(columns(t));
    if (!c.ops().empty())
        store(li, t + std::string(c.ops()), "xfcm_cappend");
    return 1;
}

int xfcm_cfirst(const xfcmd &c)
{
    xftrace("Commande xfcm_cfirst");
    if (!xf)
        return 1;
    if (!xftrim(c.ops()).empty())
        return refuse(16, 5);
    set_pointer(std::max(1, zone()[0]) - 1);
    return 1;
}

int xfcm_clast(const xfcmd &c)
{
    xftrace("Commande xfcm_clast");
    if (!xf)
        return 1;
    if (!xftrim(c.ops()).empty())
        return refuse(16, 5);
    int32_t li = text_line();
    if (li < 0)
        return 1;
    std::string t = line_text(li);
    set_pointer(std::min(t == " " ? 0 : columns(t), zone_right()));
    return 1;
}

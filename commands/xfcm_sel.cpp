// The selection commands: SELECTAll and S_Set make the selection, the S_
// commands copy, cut, paste, fold, shift and search its text, and C_Find
// looks for what the clipboard holds; FILTer puts the selected text through
// a command.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
#include "platform/platform.h"
#include "session/xed.h"
#include "tools/tools.h"

#include <algorithm>
#include <cctype>
#include <climits>

namespace {

int fail(int msg, int rc)
{
    xfmsg(msg, 1);
    cmd_rc = rc;
    return 1;
}

// Binds the selection's file for the life of the object, so that a command
// given from another file still works on the text that is selected there.
struct sel_bind {
    int was = -1;
    bool ok = false;
    sel_bind()
    {
        int f = xfsel_file();
        if (f < 0)
            return;
        ok = true;
        was = xfidx;
        if (f != xfidx)
            xfsetfile(f);
    }
    ~sel_bind()
    {
        if (ok && was != xfidx && was >= 0 && was < nbfiles())
            xfsetfile(was);
    }
};

// Columns [ca, cb) of line li (cb < 0: to the end); with `pad` a line that
// ends early is made up with blanks to the full width.
std::string cols(int32_t li, int32_t ca, int32_t cb, bool pad)
{
    std::string s;
    if (li >= 0 && li < nbli()) {
        const xfline &l = xf->lines[li];
        int32_t a = xfcol_off(l.text, l.len, ca, xf->utf8);
        int32_t b = cb < 0 ? l.len : xfcol_off(l.text, l.len, cb, xf->utf8);
        if (a < l.len && b > a)
            s.assign(l.text + a, (size_t)(std::min<int32_t>(b, l.len) - a));
    }
    if (pad && cb >= 0) {
        int32_t have = xfcol_len(s.data(), (int32_t)s.size(), xf->utf8);
        if (have < cb - ca)
            s.append((size_t)(cb - ca - have), ' ');
    }
    return s;
}

// The last line of the selection that the file holds (0-based).
int32_t sel_last() { return std::min(xfsel.l2, nbli()) - 1; }

// The selection's text as the clipboard keeps it.
pl_clip sel_text()
{
    pl_clip c;
    c.rect = xfsel.kind == 3;
    int32_t a = xfsel.l1 - 1, b = sel_last();
    int32_t c1 = xfsel.c1 - 1, c2 = xfsel.c2 < 0 ? -1 : xfsel.c2;
    for (int32_t li = a; li <= b; li++) {
        if (c.rect)
            c.lines.push_back(cols(li, c1, c2, true));
        else
            c.lines.push_back(cols(li, li == a ? c1 : 0, li == xfsel.l2 - 1 ? c2 : -1, false));
    }
    return c;
}

// Removes the selected text from the file, one undo step with the command.
void sel_remove()
{
    int32_t a = xfsel.l1 - 1, b = sel_last();
    int32_t c1 = xfsel.c1 - 1, c2 = xfsel.c2;
    if (a > b)
        return;
    if (xfsel.kind == 3) {
        // A rectangle leaves the columns on both sides of it.
        for (int32_t li = a; li <= b; li++) {
            const xfline &l = xf->lines[li];
            if (xfcol_len(l.text, l.len, xf->utf8) <= c1)
                continue;
            std::string t = cols(li, 0, c1, false) + (c2 < 0 ? std::string() : cols(li, c2, -1, false));
            xf_do('r', t, li, "xfcm_cut:60");
        }
        return;
    }
    bool last_whole = xfsel.l2 - 1 > b; // the stream ran past the file's end
    std::string tail = c2 < 0 || last_whole ? std::string() : cols(xfsel.l2 - 1, c2, -1, false);
    std::string head = cols(a, 0, c1, !tail.empty());
    xf_do('r', head + tail, a, "xfcm_cut:61");
    if (b > a)
        xf_do('D', nullptr, a + 1, b - a, 1, nullptr, "xfcm_cut:62");
}

// A selection in the current file that what is typed or pasted replaces.
bool sel_replaceable() { return xf && xf->rw && xfsel.pending && xfsel_file() == xfidx; }

// The selection must exist: false after message 58.
bool need_sel()
{
    if (xfsel_file() >= 0)
        return true;
    fail(58, 1);
    return false;
}

int copy_or_cut(const xfcmd &c, bool cut)
{
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (!w.empty()) {
        std::string lw = xffold(w);
        bool rep = abbrev(lw, "replace", 1), app = abbrev(lw, "append", 1);
        if (cut || (!rep && !app))
            return fail(16, 1);
        // The text itself, blanks inside it kept.
        while (!rest.empty() && rest.front() == ' ')
            rest.remove_prefix(1);
        std::string text(rest);
        pl_clip cb = rep ? pl_clip() : pl_clip_own();
        cb.lines.push_back(text);
        pl_clip_set(cb);
        cmd_rc = 0;
        return 1;
    }
    if (!need_sel())
        return 1;
    sel_bind bind;
    pl_clip got = sel_text();
    pl_clip_set(got);
    if (cut) {
        if (!xf->rw)
            return fail(118, 1);
        // The cursor stays where the command was given.
        sel_remove();
        xfsel_clear();
    }
    cmd_rc = 0;
    return 1;
}

// Folds the selected columns of each line.
int fold_sel(bool upper)
{
    if (!need_sel())
        return 1;
    sel_bind bind;
    int32_t a = xfsel.l1 - 1, b = sel_last();
    for (int32_t li = a; li <= b; li++) {
        const xfline &l = xf->lines[li];
        int32_t ca = xfsel.kind == 3 || li == a ? xfsel.c1 - 1 : 0;
        int32_t cb = xfsel.c2 < 0 || (xfsel.kind != 3 && li != xfsel.l2 - 1) ? -1 : xfsel.c2;
        int32_t oa = xfcol_off(l.text, l.len, ca, xf->utf8);
        int32_t ob = cb < 0 ? l.len : std::min<int32_t>(l.len, xfcol_off(l.text, l.len, cb, xf->utf8));
        if (oa >= ob)
            continue;
        std::string t(l.text, (size_t)l.len);
        if (xfcase_text(t, (size_t)oa, (size_t)ob, upper))
            xf_do('r', t, li, "xfcm_ul:90");
    }
    cmd_rc = 0;
    return 1;
}

// Inserts or overlays the clipboard's text at line li, column col (from 0).
void paste_at(const pl_clip &cb, bool rect, bool insert, int32_t li, int32_t col)
{
    const char *tag = "xfcm_paste:70";
    // The lines it reaches past the end are made first.
    int32_t need = li + (rect || !insert ? (int32_t)cb.lines.size() : 1);
    while (nbli() < need)
        xf_do('i', std::string_view(), nbli() - 1, tag);
    auto put = [&](int32_t k, int32_t c, const std::string &text, bool ins, std::string *rest) {
        std::string head = cols(k, 0, c, true);
        int32_t w = xfcol_len(text.data(), (int32_t)text.size(), xf->utf8);
        std::string tail = cols(k, ins ? c : c + w, -1, false);
        if (rest) {
            *rest = tail;
            tail.clear();
        }
        std::string t = head + text + tail;
        // Blanks the paste itself padded with at a line's end are not kept.
        size_t was = (size_t)xf->lines[k].len;
        while (tail.empty() && t.size() > was && t.back() == ' ')
            t.pop_back();
        xf_do('r', t, k, tag);
    };
    size_t n = cb.lines.size();
    if (rect || !insert) {
        for (size_t i = 0; i < n; i++)
            put(li + (int32_t)i, rect || i == 0 ? col : 0, cb.lines[i], insert, nullptr);
        return;
    }
    if (n == 1) {
        put(li, col, cb.lines[0], true, nullptr);
        return;
    }
    // A stream of lines splits the line: its end follows the last new line.
    std::string rest;
    put(li, col, cb.lines[0], true, &rest);
    for (size_t i = 1; i < n; i++) {
        std::string t = cb.lines[i] + (i + 1 == n ? rest : std::string());
        xf_do('i', t, li + (int32_t)i - 1, tag);
    }
}

// The search of S_Find and C_Find for a one-line text, from the cursor.
int find_text(const std::string &text, int dir, bool word)
{
    if (text.empty())
        return fail(108, 1);
    int vb = varblank_on, sp = span_on;
    varblank_on = 0;
    span_on = 0;
    xfpat p;
    bool ok = xfpat_init(p, text, xfcase_ignore(), word, false);
    int32_t li = -1, ms = 0, me = 0;
    bool wrapped = false;
    if (ok) {
        xfcursor cur = xfcursor_now();
        int32_t from_li = cur.fld == 0 && cur.li >= 0 && cur.li < nbli() ? cur.li : std::max(0, curline());
        int32_t from = 0;
        if (from_li < nbli()) {
            const xfline &l = xf->lines[from_li];
            int32_t col = cur.fld == 0 && cur.li == from_li ? cur.col : (dir > 0 ? -1 : l.len);
            from = col < 0 ? 0 : xfcol_off(l.text, l.len, col, xf->utf8) + (dir > 0 ? 1 : 0);
            if (col < 0)
                from = 0;
        }
        if (nbli() > 0)
            li = xfsearch_lines(p, from_li, from, dir, wrap_on != 0, -1, ms, me, wrapped);
    }
    varblank_on = vb;
    span_on = sp;
    if (!ok)
        return 1;
    if (li < 0)
        return fail(18, 1);
    const xfline &l = xf->lines[li];
    int32_t c0 = xfcol_at(l.text, l.len, ms, xf->utf8), c1 = xfcol_at(l.text, l.len, me, xf->utf8);
    curline() = li;
    xfcursor_file(li, c0);
    lastmatch = {xf->fileid, li, c0, c1 - c0};
    if (wrapped)
        xfmsg(23, 0);
    cmd_rc = 0;
    return 1;
}

// up|down and, for S_Find, word|noword.
bool find_words(std::string_view rest, bool words, int &dir, bool &word)
{
    dir = 1;
    word = false;
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        std::string lw = xffold(w);
        if (abbrev(lw, "up", 1))
            dir = -1;
        else if (abbrev(lw, "down", 1))
            dir = 1;
        else if (words && abbrev(lw, "word", 1))
            word = true;
        else if (words && abbrev(lw, "noword", 1))
            word = false;
        else
            return false;
    }
    return true;
}

} // namespace

int xfcm_selectall(const xfcmd &c)
{
    // SET SELECTALL ON|OFF and its query stay the stored setting; the bare
    // command selects.
    if (!xftrim(c.ops()).empty() || xfmsg_capture)
        return xfcm_stored(c);
    xftrace("Commande xfcm_selectall");
    if (!xf || nbli() == 0) {
        xfsel_clear();
        cmd_rc = 0;
        return 1;
    }
    xfsel_set(0, 0, nbli() - 1, -1, 2);
    cmd_rc = 0;
    return 1;
}

int xfcm_s_set(const xfcmd &c)
{
    xftrace("Commande xfcm_s_set");
    if (!xf)
        return fail(136, 1);
    std::string_view rest = c.ops();
    xfselection s;
    long v[4];
    int nv = 0;
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        std::string lw = xffold(w);
        long n;
        if (nv < 4 && xfnumber(w, n)) {
            v[nv++] = n;
        } else if (nv == 0 && abbrev(lw, "linear", 1)) {
            s.kind = 2;
        } else if (nv == 0 && abbrev(lw, "rectangular", 1)) {
            s.kind = 3;
        } else if (nv == 0 && abbrev(lw, "pending", 1)) {
            s.pending = true;
        } else if (nv == 0 && abbrev(lw, "nopending", 1)) {
            s.pending = false;
        } else {
            return fail(16, 1);
        }
    }
    if (nv != 4 || v[0] < 1 || v[1] < 1 || v[2] < v[0] || v[2] > nbli() || v[3] < 1 ||
        v[1] > INT_MAX || v[3] > INT_MAX || (v[3] < v[1] && (s.kind == 3 || v[0] == v[2])))
        return fail(16, 1);
    s.fileid = xf->fileid;
    s.l1 = (int32_t)v[0];
    s.c1 = (int32_t)v[1];
    s.l2 = (int32_t)v[2];
    s.c2 = (int32_t)v[3];
    s.width = xv->ncols;
    xfsel = s;
    cmd_rc = 0;
    return 1;
}

int xfcm_s_copy(const xfcmd &c)
{
    xftrace("Commande xfcm_s_copy");
    return copy_or_cut(c, false);
}

int xfcm_s_cut(const xfcmd &c)
{
    xftrace("Commande xfcm_s_cut");
    return copy_or_cut(c, true);
}

// FILTer [time-out n] command: the selected text goes through the command
// and its output takes the selection's place, in the selection's shape. The
// text is changed only when the command succeeded in time.
int xfcm_filter(const xfcmd &c)
{
    xftrace("Commande xfcm_filter");
    std::string_view rest = c.ops(), before = rest;
    long seconds = 0;
    if (xffold(xfword(rest)) == "time-out") {
        if (!xfnumber(xfword(rest), seconds) || seconds < 0)
            return fail(62, 1);
    } else {
        rest = before;
    }
    std::string cmd(xftrim(rest));
    if (cmd.empty())
        return fail(16, 1);
    if (!xf)
        return fail(136, 1);
    if (!need_sel())
        return 1;
    // The cursor's line, or the current line when the cursor is elsewhere;
    // a run with no page has neither, and takes the selection's first line.
    xfcursor at = xfcursor_now();
    int32_t li = at.fld == 0 ? at.li : curline();
    if ((li < 0 || li >= nbli()) && at.fld != 0 && xfsel_file() == xfidx)
        li = xfsel.l1 - 1;
    if (li < 0 || li >= nbli() || !xfinscope(li))
        return fail(6, 1);
    sel_bind bind;
    if (!xf->rw)
        return fail(118, 1);
    pl_clip text = sel_text(), out;
    out.rect = text.rect;
    static constexpr struct {
        int code, msg;
    } failures[] = {{TL_FILTER_PIPE, 63}, {TL_FILTER_START, 64}, {TL_FILTER_TIMEOUT, 65}, {TL_FILTER_FAILED, 66}};
    int r = tl_filter(cmd, text.lines, seconds * 1000, out.lines);
    for (auto &f : failures)
        if (f.code == r)
            return fail(f.msg, 1);
    int32_t a = xfsel.l1 - 1, c1 = xfsel.c1 - 1, c2 = xfsel.c2;
    int kind = xfsel.kind;
    sel_remove();
    xfsel_clear();
    if (!out.lines.empty()) {
        paste_at(out, out.rect, true, a, c1);
        // The new text is the selection, so that a second filter takes it.
        int32_t n = (int32_t)out.lines.size(), w = 0;
        for (const std::string &l : out.lines)
            w = std::max(w, xfcol_len(l.data(), (int32_t)l.size(), xf->utf8));
        const std::string &last = out.lines.back();
        int32_t lastw = xfcol_len(last.data(), (int32_t)last.size(), xf->utf8) + (n == 1 ? c1 : 0);
        if (kind == 3 && w > 0)
            xfsel_set(a, c1, a + n - 1, c1 + w - 1, 3);
        else if (kind != 3 && (c2 < 0 || lastw > 0))
            xfsel_set(a, c1, a + n - 1, c2 < 0 ? -1 : lastw - 1, kind);
    }
    cmd_rc = 0;
    return 1;
}

int xfcm_s_paste(const xfcmd &c)
{
    xftrace("Commande xfcm_s_paste");
    if (!xf)
        return fail(136, 1);
    std::string_view rest = c.ops();
    int insert = -1, shape = -1; // -1: from the mode, from the clipboard
    long num[2];
    int nn = 0;
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        std::string lw = xffold(w);
        long n;
        if (xfnumber(w, n) || (!w.empty() && w[0] == '-' && xfnumber(w.substr(1), n))) {
            if (nn == 2)
                return fail(16, 1);
            if (w[0] == '-' || n < 1)
                return fail(206, 1);
            num[nn++] = n;
        } else if (nn == 0 && (lw == "i" || lw == "o") && insert < 0) {
            insert = lw == "i";
        } else if (nn == 0 && (lw == "s" || lw == "c" || lw == "p") && shape < 0) {
            shape = lw == "p";
        } else {
            return fail(16, 1);
        }
    }
    int32_t li, col;
    if (nn > 0) {
        if (num[0] > nbli() || (nn == 2 && num[1] > xfmax_cols))
            return fail(206, 1);
        li = (int32_t)num[0] - 1;
        col = nn == 2 ? (int32_t)num[1] - 1 : 0;
    } else {
        xfcursor cur = xfcursor_now();
        if (cur.fld == 0 && cur.li >= 0 && cur.li < nbli()) {
            li = cur.li;
            col = cur.col;
        } else {
            li = std::max(0, curline());
            col = 0;
        }
    }
    pl_clip cb;
    int r = pl_clip_get(cb);
    if (r < 0)
        return fail(200, 1);
    if (r == 0 || cb.lines.empty())
        return fail(199, 1);
    if (!xf->rw)
        return fail(118, 1);
    if ((int64_t)nbli() + (int64_t)cb.lines.size() > xfmax_lines)
        return fail(16, 1);
    if (insert < 0)
        insert = batch ? 1 : asqinsert() != 0;
    bool rect = shape < 0 ? cb.rect : shape == 1;
    // A pending selection here takes the text in its place, unless the
    // command named the place itself.
    if (nn == 0 && sel_replaceable()) {
        li = xfsel.l1 - 1;
        col = xfsel.c1 - 1;
        sel_remove();
        xfsel_clear();
        insert = 1;
    }
    paste_at(cb, rect, insert != 0, li, col);
    cmd_rc = 0;
    return 1;
}

int xfpaste_text(const std::string &text)
{
    if (!xf)
        return 1;
    if (!xf->rw)
        return fail(118, 1);
    pl_clip cb = pl_clip_split(text, false);
    // Whole lines pasted (the text ends with a line end) stay whole: what
    // followed the cursor goes on the line after them.
    if (!text.empty() && text.back() == '\n')
        cb.lines.emplace_back();
    if ((int64_t)nbli() + (int64_t)cb.lines.size() > xfmax_lines)
        return fail(16, 1);
    xfcursor cur = xfcursor_now();
    int32_t li = std::max(0, curline()), col = 0;
    if (cur.fld == 0 && cur.li >= 0 && cur.li < nbli()) {
        li = cur.li;
        col = cur.col;
    }
    // As typing does, a paste over a pending selection takes its place.
    if (cur.fld == 0 && sel_replaceable() && xfsel_has(li, col)) {
        li = xfsel.l1 - 1;
        col = xfsel.c1 - 1;
        sel_remove();
        xfsel_clear();
    }
    paste_at(cb, false, true, li, col);
    // The cursor goes behind what came, as after typing it.
    int32_t last = li + (int32_t)cb.lines.size() - 1;
    const std::string &lt = cb.lines.back();
    int32_t w = xfcol_len(lt.data(), (int32_t)lt.size(), xf->utf8);
    xfcursor_file(last, cb.lines.size() == 1 ? col + w : w);
    cmd_rc = 0;
    return 1;
}

int xf_cut(const std::string &typed)
{
    if (!sel_replaceable() || typed.empty())
        return 0;
    int32_t li = xfsel.l1 - 1, col = xfsel.c1 - 1;
    sel_remove();
    xfsel_clear();
    if (li >= nbli()) {
        // The selection's line has gone: the character starts a new last line.
        xf_do('i', typed, nbli() - 1, "xf_cut");
        li = nbli() - 1;
        col = 0;
    } else {
        xf_do('r', cols(li, 0, col, true) + typed + cols(li, col, -1, false), li, "xf_cut");
    }
    xfcursor_file(li, col + 1);
    return 1;
}

int xfsel_delete(bool keep)
{
    if (xfsel_file() < 0)
        return 0;
    sel_bind bind;
    if (!xf->rw)
        return fail(118, 1);
    if (keep)
        pl_clip_set(sel_text());
    sel_remove();
    xfsel_clear();
    return 1;
}

int xfcm_s_upper(const xfcmd &)
{
    xftrace("Commande xfcm_s_upper");
    return fold_sel(true);
}

int xfcm_s_lower(const xfcmd &)
{
    xftrace("Commande xfcm_s_lower");
    return fold_sel(false);
}

namespace {
int shift_sel(const xfcmd &c, bool right)
{
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    long n = 1;
    if ((!w.empty() && (!xfnumber(w, n) || n > xfmax_cols)) || !xfword(rest).empty())
        return fail(16, 1);
    if (!need_sel())
        return 1;
    sel_bind bind;
    int32_t a = xfsel.l1 - 1, b = sel_last();
    if (n > 0 && a <= b) {
        if (right) {
            for (int32_t li = a; li <= b; li++)
                if ((int64_t)xf->lines[li].len + n > xfmax_cols)
                    return fail(16, 1);
            xfshr(a, b, (int32_t)n, false);
        } else {
            xfshl(a, b, (int32_t)n, false);
        }
    }
    cmd_rc = 0;
    return 1;
}
} // namespace

int xfcm_s_lshift(const xfcmd &c)
{
    xftrace("Commande xfcm_s_lshift");
    return shift_sel(c, false);
}

int xfcm_s_rshift(const xfcmd &c)
{
    xftrace("Commande xfcm_s_rshift");
    return shift_sel(c, true);
}

int xfcm_s_find(const xfcmd &c)
{
    xftrace("Commande xfcm_s_find");
    int dir;
    bool word;
    if (!find_words(c.ops(), true, dir, word))
        return fail(16, 1);
    if (!need_sel())
        return 1;
    if (xfsel.l1 != xfsel.l2)
        return fail(28, 1);
    std::string text;
    {
        sel_bind bind;
        pl_clip t = sel_text();
        text = t.lines.empty() ? std::string() : t.lines[0];
    }
    if (!xf)
        return 1;
    return find_text(text, dir, word);
}

int xfcm_c_find(const xfcmd &c)
{
    xftrace("Commande xfcm_c_find");
    int dir;
    bool word;
    if (!find_words(c.ops(), false, dir, word))
        return fail(16, 1);
    if (!xf)
        return 1;
    pl_clip cb;
    if (pl_clip_get(cb) <= 0 || cb.lines.empty() ||
        (cb.lines.size() == 1 && cb.lines[0].empty())) {
        xfmsgs("no data in clipboard", 0);
        cmd_rc = 1;
        return 1;
    }
    if (cb.lines.size() == 1)
        return find_text(cb.lines[0], dir, false);
    // Many lines: the first ends a line, the middle ones are whole lines,
    // the last starts a line.
    size_t n = cb.lines.size();
    int32_t start = std::max(0, curline());
    int32_t total = nbli();
    for (int32_t step = 1; step <= total; step++) {
        int64_t k = (int64_t)start + (int64_t)dir * step;
        if (k < 0 || k >= total) {
            if (!wrap_on)
                break;
            k = (k % total + total) % total;
        }
        int32_t li = (int32_t)k;
        if (li + (int64_t)n > total)
            continue;
        auto text = [&](int32_t i) { return std::string(xf->lines[i].text, (size_t)xf->lines[i].len); };
        std::string first = text(li);
        const std::string &f = cb.lines[0];
        if (first.size() < f.size() || first.compare(first.size() - f.size(), f.size(), f) != 0)
            continue;
        bool ok = true;
        for (size_t i = 1; ok && i + 1 < n; i++)
            ok = text(li + (int32_t)i) == cb.lines[i];
        std::string last = ok ? text(li + (int32_t)n - 1) : std::string();
        if (!ok || last.compare(0, cb.lines[n - 1].size(), cb.lines[n - 1]) != 0)
            continue;
        curline() = li;
        const xfline &l = xf->lines[li];
        xfcursor_file(li, xfcol_at(l.text, l.len, l.len - (int32_t)f.size(), xf->utf8));
        cmd_rc = 0;
        return 1;
    }
    return fail(18, 1);
}

int xfcm_s_xed(const xfcmd &)
{
    xftrace("Commande xfcm_s_xed");
    if (!need_sel())
        return 1;
    std::string name;
    {
        sel_bind bind;
        pl_clip t = sel_text();
        name = t.lines.empty() ? std::string() : std::string(xftrim(t.lines[0]));
    }
    if (name.empty())
        return fail(58, 1);
    return xfcmdline("XEDIT " + name);
}

namespace {

// The word a selection names for HELP and MAN: the first word of its text,
// without the punctuation around it ("printf(" is printf); "" when none.
std::string sel_word()
{
    sel_bind bind;
    pl_clip t = sel_text();
    std::string_view rest = t.lines.empty() ? std::string_view() : std::string_view(t.lines[0]);
    std::string_view w = xfword(rest);
    auto wordy = [](char ch) { return std::isalnum((unsigned char)ch) || ch == '_' || (unsigned char)ch >= 128; };
    while (!w.empty() && !wordy(w.front()))
        w.remove_prefix(1);
    size_t n = 0;
    while (n < w.size() && (wordy(w[n]) || w[n] == '.' || w[n] == '-'))
        n++;
    return std::string(w.substr(0, n));
}

// HELP or MAN on the selected word.
int on_word(const char *label, int (*look)(std::string_view), int none)
{
    xftrace(label);
    if (!need_sel())
        return 1;
    std::string w = sel_word();
    return w.empty() ? fail(none, 1) : look(w);
}

} // namespace

int xfcm_s_help(const xfcmd &) { return on_word("Commande xfcm_s_help", xfhelp_word, 116); }

int xfcm_s_man(const xfcmd &) { return on_word("Commande xfcm_s_man", xfman_word, 58); }

int xfcm_s_prsh(const xfcmd &)
{
    xftrace("Commande xfcm_s_prsh");
    cmd_rc = 0;
    return 1;
}

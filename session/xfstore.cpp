// The line store: the gapped line array, xf_do (the one way a line changes),
// the journal entries it writes, and the references that follow inserts and
// deletes (named points, pending entries, cursor records, current lines).
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

// ---------------------------------------------------------------------------
// xflines

xflines::~xflines() { std::free(buf_); }

void xflines::movegap(int32_t at)
{
    if (at < gap0_)
        std::memmove(buf_ + at + gaplen_, buf_ + at, (size_t)(gap0_ - at) * sizeof(xfline));
    else if (at > gap0_)
        std::memmove(buf_ + gap0_, buf_ + gap0_ + gaplen_, (size_t)(at - gap0_) * sizeof(xfline));
    gap0_ = at;
}

void xflines::reserve(int32_t cap)
{
    if (cap <= cap_)
        return;
    auto *nb = (xfline *)xfmalloc((size_t)cap * sizeof(xfline));
    int32_t tail = cap_ - gap0_ - gaplen_;
    if (gap0_)
        std::memcpy(nb, buf_, (size_t)gap0_ * sizeof(xfline));
    if (tail)
        std::memcpy(nb + cap - tail, buf_ + gap0_ + gaplen_, (size_t)tail * sizeof(xfline));
    std::free(buf_);
    buf_ = nb;
    gaplen_ += cap - cap_;
    cap_ = cap;
}

xfline *xflines::span(int32_t at, int32_t n)
{
    // Only a gap inside the run moves, to whichever end is nearer.
    if (gap0_ > at && gap0_ < at + n)
        movegap(gap0_ - at < at + n - gap0_ ? at : at + n);
    return buf_ + (at < gap0_ ? at : at + gaplen_);
}

void xflines::open(int32_t at, int32_t n)
{
    if (n <= 0)
        return;
    if (gaplen_ < n) {
        int64_t want = (int64_t)cap_ + std::max<int64_t>(n - gaplen_, cap_ / 2 + 16);
        reserve((int32_t)std::min<int64_t>(want, 2147483647));
    }
    movegap(at);
    std::memset(buf_ + gap0_, 0, (size_t)n * sizeof(xfline));
    gap0_ += n;
    gaplen_ -= n;
}

void xflines::close(int32_t at, int32_t n)
{
    if (n <= 0)
        return;
    movegap(at);
    gaplen_ += n;
}

// ---------------------------------------------------------------------------
// Journal entries.  The entry keeps the old text pointers: nothing is copied.

namespace {

xfjentry &journal_entry(char cd, int32_t li, int32_t count, int mode)
{
    xfjournal &j = xf->journal;
    if (xf->group_open && mode == 1 && !j.redo.empty())
        xfclearredo(xf);
    j.undo.emplace_back();
    xfjentry &e = j.undo.back();
    e.groupstart = xf->group_open != 0;
    e.line = li;
    e.code = cd;
    e.nlines = count;
    e.oldmark = 0;
    if (mode == 1) {
        e.cursor = xf->ptcur_i;
        xf->group_open = 0;
    } else {
        e.cursor.ec = -1;
    }
    return e;
}

void free_lines(std::vector<xfline> &v)
{
    for (auto &l : v)
        xftext_free(l.text);
    v.clear();
}

// Upper-case and cut a text as the file's settings ask; returns the new length.
int32_t treat(char *&text, int32_t len)
{
    if (xf->case_mode >= 2)
        for (int32_t i = 0; i < len; i++)
            text[i] = (char)std::toupper((unsigned char)text[i]);
    int32_t lim = 0;
    if (xf->lrecl && xf->trunc)
        lim = std::min(xf->lrecl, xf->trunc);
    else
        lim = xf->lrecl ? xf->lrecl : xf->trunc;
    // The limit is in columns: a UTF-8 character is never cut in two.
    int32_t cut = lim > 0 && len > lim ? xfcol_off(text, len, lim, xf->utf8) : len;
    if (cut < len) {
        len = cut;
        if (!xf->keepblanks)
            while (len > 0 && text[len - 1] == ' ')
                len--;
        text[len] = 0;
    }
    return len;
}

// Follows each cycle of the permutation once, moving one line at a time.
// A slot filled has its entry complemented (negative) until the end, which
// tells the cycles already done apart without an array beside the order.
void permute(xflines &L, int32_t li, int32_t count, int32_t *order)
{
    for (int32_t k = 0; k < count; k++) {
        if (order[k] < 0 || order[k] == k)
            continue;
        xfline first = L[li + k];
        int32_t j = k;
        for (;;) {
            int32_t from = order[j];
            order[j] = ~from;
            if (from == k) {
                L[li + j] = first;
                break;
            }
            L[li + j] = L[li + from];
            j = from;
        }
    }
    for (int32_t k = 0; k < count; k++)
        if (order[k] < 0)
            order[k] = ~order[k];
}

// The selection keeps to its text when lines before it come or go; lines
// of it that go take it in, and when all go it ends.
void adjust_selection_delete(int32_t li, int32_t n)
{
    if (xfsel.fileid != xf->fileid)
        return;
    int32_t a = li + 1, b = li + n; // the lines that go, from 1
    if (xfsel.l1 >= a && xfsel.l2 <= b) {
        xfsel_clear();
        return;
    }
    if (xfsel.l2 > b) {
        xfsel.l2 -= n;
    } else if (xfsel.l2 >= a) {
        xfsel.l2 = a - 1;
        if (xfsel.kind != 3)
            xfsel.c2 = -1;
    }
    if (xfsel.l1 > b) {
        xfsel.l1 -= n;
    } else if (xfsel.l1 >= a) {
        xfsel.l1 = a;
        if (xfsel.kind != 3)
            xfsel.c1 = 1;
    }
}

void adjust_points_delete(int32_t li, int32_t n)
{
    adjust_selection_delete(li, n);
    auto &p = xf->points;
    p.erase(std::remove_if(p.begin(), p.end(),
                           [&](const xfpoint &x) { return x.li >= li && x.li < li + n; }),
            p.end());
    for (auto &x : p)
        if (x.li >= li + n)
            x.li -= n;
}

void adjust_points_insert(int32_t after, int32_t n)
{
    if (xfsel.fileid == xf->fileid) {
        if (xfsel.l1 > after + 1)
            xfsel.l1 += n;
        if (xfsel.l2 > after + 1)
            xfsel.l2 += n;
    }
    for (auto &x : xf->points)
        if (x.li > after)
            x.li += n;
}

// Named lines go with their lines through a reordering: the line that was
// at li + order[k] is now at li + k.  The points are few and the range may
// be millions of lines, so the points are looked up, not the range inverted.
void adjust_points_permute(int32_t li, int32_t count, const int32_t *order)
{
    std::vector<std::pair<int32_t, size_t>> at; // old offset, point
    for (size_t p = 0; p < xf->points.size(); p++)
        if (xf->points[p].li >= li && xf->points[p].li < li + count)
            at.push_back({xf->points[p].li - li, p});
    if (at.empty())
        return;
    std::sort(at.begin(), at.end());
    for (int32_t k = 0; k < count; k++) {
        auto it = std::lower_bound(at.begin(), at.end(), std::make_pair(order[k], (size_t)0));
        for (; it != at.end() && it->first == order[k]; ++it)
            xf->points[it->second].li = li + k;
    }
}

} // namespace

void xfclearredo(xfile *f)
{
    for (auto &e : f->journal.redo)
        free_lines(e.old);
    f->journal.redo.clear();
}

void xfclearundo(xfile *f)
{
    for (auto &e : f->journal.undo)
        free_lines(e.old);
    f->journal.undo.clear();
}

void xfcheckroom(int32_t extra)
{
    int64_t want = (int64_t)xf->nbli() + extra;
    if (want > 2147483647) {
        if (xf->nbli() >= xfmax_lines)
            xfnomem(0, 1);
        want = 2147483647;
    }
    if (want > xf->lines.capacity()) {
        int64_t grow = std::max<int64_t>(want, (int64_t)xf->lines.capacity() * 3 / 2);
        xf->lines.reserve((int32_t)std::min<int64_t>(grow, 2147483647));
    }
}

void xfclampcur()
{
    int32_t hi = xf->nbli() - 1;
    for (xview *v : views) {
        if (xfidx < 0 || xfidx >= (int)v->perfile.size())
            continue;
        int32_t &c = v->perfile[xfidx].curline;
        c = std::max(topline, std::min(c, hi));
    }
}

void xf_do(char cd, const char *text, int32_t li, int32_t count, int mode,
           xfline *lines, const char *tag, std::vector<int32_t> *order)
{
    xftrace(tag);
    bool reorder = cd == 'P' || cd == 'p';
    if (!std::strchr("DdriIsPp", cd) || cd == 0 ||
        (reorder && (!order || (int64_t)order->size() != (int64_t)count))) {
        std::fprintf(stderr, "vorta: xf_do: internal error, wrong argument: cd = %c\n", cd);
        return;
    }
    if (mode == 1 && (cd == 'D' || cd == 'I' || reorder) && count == 0)
        return;
    if (mode == 1 && xf->chgcount < 0)
        xf->chgcount = 0;
    xfjentry *e = nullptr;
    if (mode == 1 || mode == 2) {
        e = &journal_entry(reorder ? 'P' : cd, li, cd == 'd' || cd == 'r' || cd == 'i' ? 1 : count, mode);
        xf->chgcount++;
        xf->chgsince++;
    }
    if (cd != 's') {
        if (xf->synstale != 0)
            xf->synstale = -1;
        xfsyn_changed(std::max(0, li));
    }

    xflines &L = xf->lines;
    switch (cd) {
    case 'D':
    case 'd': {
        int32_t n = cd == 'd' ? 1 : count;
        n = std::min(n, L.size() - li);
        if (n <= 0 || li < 0)
            break;
        for (int32_t k = 0; k < n; k++) {
            if (e)
                e->old.push_back(L[li + k]);
        }
        L.close(li, n);
        adjust_points_delete(li, n);
        break;
    }
    case 'r': {
        xfline &l = L[li];
        if (e)
            e->old.push_back(l);
        // The new text becomes the line's own; `lines` carries a length when
        // the text may hold NUL bytes.
        l.text = lines ? lines[0].text : const_cast<char *>(text);
        l.len = lines ? lines[0].len : (int32_t)std::strlen(text);
        if (mode == 1)
            l.len = treat(l.text, l.len);
        break;
    }
    case 'i':
    case 'I': {
        int32_t n = cd == 'i' ? 1 : count;
        xfcheckroom(cd == 'i' ? 1000 : count + 1000);
        L.open(li + 1, n);
        for (int32_t k = 0; k < n; k++) {
            xfline &l = L[li + 1 + k];
            if (cd == 'i' && !lines) {
                l.text = const_cast<char *>(text);
                l.len = (int32_t)std::strlen(text);
                l.selevel = xv ? xv->select_new : 0;
            } else {
                l = lines[k];
                if (mode == 1)
                    l.selevel = xv ? xv->select_new : 0;
            }
            if (mode == 1)
                l.len = treat(l.text, l.len);
        }
        adjust_points_insert(li, n);
        break;
    }
    case 's':
        if (e)
            e->oldmark = L[li].stopmark();
        L[li].set_stopmark(count & 3);
        break;
    case 'P':
    case 'p':
        if (cd == 'P')
            permute(L, li, count, order->data());
        adjust_points_permute(li, count, order->data());
        if (e)
            e->order.swap(*order); // the entry's own is new, so `order` ends empty
        break;
    }
    xfclampcur();
}

// A copy of `text` (which may hold NUL bytes) replaces or follows line `li`.
void xf_do(char cd, std::string_view text, int32_t li, const char *tag)
{
    xfline l{xfstrdup(text), (int32_t)text.size(), 0, xv ? xv->select_new : 0};
    xf_do(cd, nullptr, li, 1, 1, &l, tag);
}

// ---------------------------------------------------------------------------
// References that follow the lines.

namespace {
// Entries of a list that name lines [from, from+n) go with them; those
// behind move up.
template <class V, class L> void drop_lines(V &v, int32_t from, int32_t n, L line)
{
    int32_t end = from + n;
    v.erase(std::remove_if(v.begin(), v.end(),
                           [&](auto &p) { return line(p) >= from && line(p) < end; }),
            v.end());
    for (auto &p : v)
        if (line(p) >= end)
            line(p) -= n;
}

template <class F> void each_cursor(F f)
{
    f(xf->ptcur_i);
    for (auto &c : xf->curstack)
        f(c);
    f(ptcu);
}
} // namespace

void xfshift_down(int32_t after, int32_t n)
{
    for (auto *t : {&xf->pend1, &xf->pend2})
        for (auto &p : *t)
            if (p.li > after)
                p.li += n;
    // The texts of the line `after` itself stay with it.
    for (auto *t : {&xf->pfxtexts, &xf->pfxerrs})
        for (auto &p : *t)
            if (p.second > after)
                p.second += n;
    each_cursor([&](xfcursor &c) {
        if (c.ec == xvidx && c.fld == 0 && c.li > after)
            c.li += n;
    });
    for (xview *v : views)
        if (xfidx < (int)v->perfile.size())
            for (auto &k : v->perfile[xfidx].kept)
                if (k.li > after)
                    k.li += n;
}

void xfshift_up(int32_t from, int32_t n, int32_t at)
{
    (void)at;
    int32_t end = from + n;
    for (auto *t : {&xf->pend1, &xf->pend2})
        drop_lines(*t, from, n, [](xfpend &p) -> int32_t & { return p.li; });
    for (auto *t : {&xf->pfxtexts, &xf->pfxerrs})
        drop_lines(*t, from, n, [](auto &p) -> int32_t & { return p.second; });
    each_cursor([&](xfcursor &c) {
        if (c.ec != xvidx || c.fld != 0)
            return;
        if (c.li >= end)
            c.li -= n;
        else if (c.li >= from)
            c.li = from - 1;
    });
    for (xview *v : views) {
        if (xfidx >= (int)v->perfile.size())
            continue;
        drop_lines(v->perfile[xfidx].kept, from, n, [](xfkept &k) -> int32_t & { return k.li; });
        int32_t &c = v->perfile[xfidx].curline;
        if (c >= end)
            c -= n;
        else if (c >= from)
            c = from - 1;
    }
    xfclampcur();
}

bool xfinscope(int32_t li)
{
    // The two end rows are always walkable; anything further out never is,
    // and the inverse scope turns both answers round.
    if (li == -1 || li == nbli())
        return xv->scope != 2;
    if (li < -1 || li > nbli())
        return xv->scope == 2;
    if (xv->scope == 1)
        return true;
    int32_t s = xf->lines[li].selevel;
    bool in = s >= xv->display_lo && s <= xv->display_hi;
    return xv->scope == 2 ? !in : in;
}

void xfadd(int32_t after, int32_t count, int flag)
{
    if (count <= 0)
        return;
    // New lines stand just before the next line in scope.
    while (after + 1 < nbli() && !xfinscope(after + 1))
        after++;
    std::vector<xfline> nl((size_t)count);
    for (auto &l : nl) {
        l.text = xfstrdup("");
        l.len = 0;
        l.selevel = xv->select_new;
    }
    xf_do('I', nullptr, after, count, 1, nl.data(), "xfadd:45");
    xfshift_down(after, count);
    if (flag) {
        xfcursor c = xf->ptcur_i;
        c.ec = xvidx;
        c.fld = 0;
        c.li = after + 1;
        c.col = 0;
        c.prio = 60;
        xf->curstack.push_back(c);
    }
}

int xfpoint_find(std::string_view name)
{
    for (size_t i = 0; i < xf->points.size(); i++)
        if (xf->points[i].name == name)
            return (int)i;
    return -1;
}

void xfpoint_set(std::string_view name, int32_t li)
{
    int k = xfpoint_find(name);
    if (k >= 0)
        xf->points[(size_t)k].li = li;
    else
        xf->points.push_back({std::string(name), li});
}

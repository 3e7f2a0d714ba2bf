// Undo and redo: the journal that xf_do writes is walked back one group at a
// time, each entry replayed in reverse without a journal of its own; what is
// undone goes to the redo list, which replays forwards through the journal
// again.  Text pointers move between the lines and the lists, never copies.
#include "session/xed.h"

#include <algorithm>

namespace {

// Pending prefix entries, prefix texts: they name lines that move now.
void forget_pending()
{
    xf->pend1.clear();
    xf->pend2.clear();
    xf->pfxtexts.clear();
    xf->pfxerrs.clear();
    // The text under a selection is no longer what was selected.
    xfsel_clear();
}

// Lines that come back get no stop mark and the view's selection level.
void fresh(std::vector<xfline> &v)
{
    int32_t sel = xv ? xv->select_new : 0;
    for (auto &l : v) {
        l.set_stopmark(0);
        l.selevel = sel;
    }
}

// The inverse of one entry, with the texts needed to redo it afterwards.
void reverse(xfjentry &e, xfjentry &r)
{
    xflines &L = xf->lines;
    switch (e.code) {
    case 'r':
        r.old.push_back(L[e.line]);
        xf_do('r', nullptr, e.line, 1, 0, e.old.data(), "xf_undo:42");
        break;
    case 'i':
        r.old.push_back(L[e.line + 1]);
        xf_do('d', nullptr, e.line + 1, 1, 0, nullptr, "xf_undo:47");
        break;
    case 'I':
        for (int32_t k = 0; k < e.nlines; k++)
            r.old.push_back(L[e.line + 1 + k]);
        xf_do('D', nullptr, e.line + 1, e.nlines, 0, nullptr, "xf_undo:60");
        break;
    case 'd':
        fresh(e.old);
        xf_do('i', nullptr, e.line - 1, 1, 0, e.old.data(), "xf_undo:66");
        break;
    case 'D':
        fresh(e.old);
        xf_do('I', nullptr, e.line - 1, (int32_t)e.old.size(), 0, e.old.data(), "xf_undo:72");
        break;
    case 's':
        xf_do('s', nullptr, e.line, e.oldmark, 0, nullptr, "xf_undo:76");
        break;
    case 'P': {
        // The inverse order puts each line back where it came from.
        std::vector<int32_t> back(e.order.size());
        for (size_t k = 0; k < e.order.size(); k++)
            back[(size_t)e.order[k]] = (int32_t)k;
        xf_do('P', nullptr, e.line, (int32_t)back.size(), 0, nullptr, "xf_undo:80", &back);
        r.order = std::move(e.order);
        break;
    }
    }
    // The texts of the entry now belong to the lines again.
    e.old.clear();
}

} // namespace

bool xf_undo()
{
    if (!xf || xf->journal.undo.empty())
        return false;
    forget_pending();
    auto &undo = xf->journal.undo;
    auto &redo = xf->journal.redo;
    while (!undo.empty()) {
        xfjentry e = std::move(undo.back());
        undo.pop_back();
        xfjentry r;
        r.groupstart = e.groupstart;
        r.line = e.line;
        r.code = e.code;
        r.nlines = e.nlines;
        r.oldmark = e.oldmark;
        r.cursor.ec = -1;
        reverse(e, r);
        redo.push_back(std::move(r));
        if (e.cursor.ec >= 0) {
            xfcursor c = e.cursor;
            c.fld = 0;
            c.li = std::max(0, c.li);
            c.prio = 257;
            xf->ptcur_i = c;
        }
        if (e.groupstart)
            break;
    }
    if (!undo.empty()) {
        xf->chgcount = std::max(1, xf->chgcount - 1);
        xf->chgsince = std::max(0, xf->chgsince - 1);
    } else {
        xf->chgsince = 0;
        if (xf->chgcount > 0)
            xf->chgcount = 0;
    }
    xfclampcur();
    return true;
}

void xfopen_groups()
{
    for (xfile *f : files)
        f->group_open = 1;
}

bool xf_redo()
{
    if (!xf || xf->journal.redo.empty())
        return false;
    forget_pending();
    auto &redo = xf->journal.redo;
    bool first = true;
    while (!redo.empty()) {
        if (!first && redo.back().groupstart)
            break;
        first = false;
        xfjentry r = std::move(redo.back());
        redo.pop_back();
        xf->group_open = r.groupstart ? 1 : 0;
        // xf_do journals the change again (mode 2) and counts it.
        switch (r.code) {
        case 'r':
        case 'i':
            xf_do(r.code, nullptr, r.line, 1, 2, r.old.data(), "xf_redo:32");
            break;
        case 'I':
            xf_do('I', nullptr, r.line, (int32_t)r.old.size(), 2, r.old.data(), "xf_redo:32");
            break;
        case 'P':
            xf_do('P', nullptr, r.line, (int32_t)r.order.size(), 2, nullptr, "xf_redo:36", &r.order);
            break;
        default:
            xf_do(r.code, nullptr, r.line, r.nlines, 2, nullptr, "xf_redo:34");
            break;
        }
    }
    if (redo.empty())
        redo.shrink_to_fit();
    xfclampcur();
    return true;
}

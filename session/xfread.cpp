// The read cycle: the one place the editor waits for the user. A read commits
// what was typed (file lines first, then prefix entries noted, then the
// command line; then the prefix entries run), and xfcom then runs the one
// command the event stands for: a queued command, a key's definition, or
// the command line.
#include "session/xed.h"
#include "platform/platform.h"
#include "session/xfkeys.h"
#include "session/xfpage.h"
#include "commands/commands.h"
#include "fields/dialogs/dialogs.h"
#include "fields/fields.h"
#include "fields/plat.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

int aid = 0;
int aid_value = 0;
int autoexp = 1;          // AUTOEXP ON: typing past a field's end extends the line
int autoindent = 1;       // AUTOINDENT ON
int autoindent_stay = 1;  // AUTOINDENT ... STAY
int wheel_lines[2] = {4, 10}; // wheel scroll, plain and with Shift

// A field's text: UTF-8 for a field of UTF-8 text, else a byte a cell.
std::string xffield_text(int id, bool trim, bool utf8)
{
    int len = 0;
    char *s = utf8 ? ascget_utf8(id, &len, trim ? 1 : 0) : ascget_char(id, &len, trim ? 1 : 0);
    std::string t = s ? std::string(s, (size_t)len) : std::string();
    std::free(s);
    return t;
}

// The part before the view's first column and the part past the field are
// kept around what the row holds now.
std::string xfrow_line(const xview::rowmap &m, const std::string &typed)
{
    const xfline &l = xf->lines[m.li];
    bool u = xf->utf8;
    std::string_view old(l.text, (size_t)l.len);
    // Columns, not bytes: the row showed m.len columns from column m.col0.
    size_t a = (size_t)xfcol_off(l.text, l.len, m.col0, u);
    size_t b = (size_t)xfcol_off(l.text, l.len, m.col0 + m.len, u);
    std::string now(old.substr(0, std::min(old.size(), a)));
    now.resize(a, ' ');
    now += typed;
    if (old.size() > b) {
        now.append((size_t)std::max(0, m.len - xfcol_len(typed.data(), (int32_t)typed.size(), u)), ' ');
        now += old.substr(b);
    }
    return now;
}

xfread_req *read_req = nullptr;

namespace {

bool asr = false;       // the read ended with ENTER
bool nocmd = false;     // no command from the command line this time
bool resized = false;   // the window changed size
bool released = false;  // the read ended on a key's release
bool first_read = true; // the page has not been shown yet
bool typed_this_cycle = false; // a typing event was handled in this read

// Which view and row a field belongs to.
struct where {
    int view = -1;  // view index, -1 none
    int fld = 2;    // 0 file area, -1 prefix, 1 command line, 2 elsewhere
    int row = -1;   // row in the view's map
};

where locate_field(int id)
{
    where w;
    for (int v = 0; v < (int)views.size(); v++) {
        xview *vw = views[(size_t)v];
        if (id == vw->cmdfield && id) {
            w.view = v;
            w.fld = 1;
            return w;
        }
        for (size_t r = 0; r < vw->rows.size(); r++) {
            if (vw->rows[r].fld == id && id) {
                w.view = v;
                w.fld = 0;
                w.row = (int)r;
                return w;
            }
            if (vw->rows[r].pfx == id && id) {
                w.view = v;
                w.fld = -1;
                w.row = (int)r;
                return w;
            }
        }
    }
    return w;
}

// The cursor as the field manager has it, made the current view's.
// The file cell of a field's line and column (from 1): false off the lines
// of the file.
bool file_cell(int id, int col, int32_t &li, int32_t &c)
{
    where w = locate_field(id);
    if (w.fld != 0 || w.row < 0 || w.view != xvidx || !xf)
        return false;
    const xview::rowmap &m = xv->rows[(size_t)w.row];
    if (m.li < 0 || m.li >= nbli())
        return false;
    li = m.li;
    c = m.col0 + col - 1;
    return true;
}

// A mouse drag over the file: where it started, once it has.
struct drag_state {
    bool on = false;        // a drag is stretching the selection
    bool pressed = false;   // a press the field manager passed on was on a file cell
    int32_t li = 0, col = 0; // the anchor (or that press's cell)
};
drag_state drag;

// A drag event: the selection runs from the anchor to the mouse's cell, a
// rectangle when Alt is held. The anchor is the cell of the press, which a
// plain left press has made the cursor's.
void drag_select()
{
    int id, line, col;
    if (!drag.on) {
        if (!drag.pressed) {
            asqcur(1, &id, &line, &col);
            if (!file_cell(id, col, drag.li, drag.col))
                return;
        }
        drag.on = true;
    }
    int32_t li, c;
    asqmou(1, &id, &line, &col);
    if (!file_cell(id, col, li, c))
        return;
    xfsel_set(drag.li, drag.col, li, c, (as_evmods & 4) != 0 ? 3 : 2);
    // What the mouse selects, typing replaces.
    xfsel.pending = true;
}

// The selection keys PUT, GET and DEL act on their press and their release;
// a drag while one is held selects what the release acts on, and a click
// while GET is held marks where its release pastes.
struct selkey_state {
    int held = -1;           // SK_* of the key held down, -1 none
    bool dragged = false;    // the mouse selected something meanwhile
    bool marked = false;     // a click marked a place (GET)
    int32_t li = 0, col = 0; // that place
};
selkey_state selkey;

// The field hook: a character typed over a pending selection of the file
// under the cursor is the read cycle's, not the field's; in a file that may
// not be changed it is typed as any other.
int typed_over(int)
{
    if (!xf || !xf->rw || !xfsel.pending || xfsel_file() != xfidx)
        return 0;
    int id, line, col;
    int32_t li, c;
    asqcur(1, &id, &line, &col);
    return file_cell(id, col, li, c) && xfsel_has(li, c) ? 1 : 0;
}

void read_cursor()
{
    int id, line, col;
    asqcur(1, &id, &line, &col);
    where w = locate_field(id);
    xfopen_groups();
    ptcu = xfcursor{};
    ptcu.ec = w.view < 0 ? xvidx : w.view;
    if (w.view >= 0 && w.view != xvidx)
        xfsetview(w.view);
    ptcu.fld = w.fld;
    if (w.fld == 1) {
        xv->cmdcursor = col - 1;
        ptcu.col = col - 1;
    }
    if ((w.fld == 0 || w.fld == -1) && w.row >= 0) {
        const xview::rowmap &m = xv->rows[(size_t)w.row];
        ptcu.li = w.fld == 0 ? m.li : m.pli;
        ptcu.col = w.fld == 0 ? m.col0 + col - 1 : 0;
    }
    if (xf) {
        xfcursor c = ptcu;
        c.prio = 20;
        xf->ptcur_i = c;
    }
}

// Where a field stands on the screen, for READ's report.
void report(const char *tag, int id, int32_t li, std::string text)
{
    int32_t w[3] = {0, 0, 0};
    asqfld(0, id, 3, w);
    read_req->items.push_back(xfread_item{tag, (int)w[1], (int)w[2], li, std::move(text)});
}

void commit_line(const xview::rowmap &m, const std::string &typed)
{
    if (m.li < 0 || m.li >= nbli())
        return;
    const xfline &l = xf->lines[m.li];
    std::string now = xfrow_line(m, typed);
    if (!xf->keepblanks)
        while (!now.empty() && now.back() == ' ')
            now.pop_back();
    if (read_req && read_req->all)
        report("FIL", m.fld, m.li, now);
    if (read_req && !read_req->commit)
        return;
    if (now.size() != (size_t)l.len || now.compare(0, now.size(), l.text, (size_t)l.len) != 0)
        xf_do('r', now, m.li, "xfack1");
}

// Only what the user typed counts: a cell still holding the area's own
// filling (the line number or '=') as the page put it there is no part of
// an entry. A text of the user's own shown back is taken whole.
void commit_prefix(const xview::rowmap &m, const std::string &typed)
{
    std::string t = typed;
    for (size_t k = 0; k < t.size() && k < m.pshown.size(); k++)
        if (t[k] == m.pshown[k])
            t[k] = ' ';
    // A macro that reads everything gets the entry to act on itself.
    if (read_req && read_req->all) {
        std::string_view e = xftrim(t);
        while (!e.empty() && e.back() == ' ')
            e.remove_suffix(1);
        if (!e.empty()) {
            report("PRF", m.pfx, m.pli, std::string(e));
            return;
        }
        if (!read_req->commit)
            return;
    }
    xfack2(m.pli, t, m.pfx);
}

// The commit: file rows of every view first, then prefix entries, then the
// command line.
void xfack()
{
    int ids[6000], lens[6000], used[6000];
    int n = asqmod(6000, ids, lens, used);
    if (n <= 0)
        return;
    std::vector<int> mod(ids, ids + n);
    auto modified = [&](int id) { return id && std::find(mod.begin(), mod.end(), id) != mod.end(); };
    int save = xvidx;
    for (int v = 0; v < (int)views.size(); v++) {
        xfsetview(v);
        if (!xf)
            continue;
        for (auto &m : xv->rows)
            if (m.li >= 0 && m.li < nbli() && modified(m.fld))
                commit_line(m, xffield_text(m.fld, true, xf->utf8 != 0));
    }
    for (int v = 0; v < (int)views.size(); v++) {
        xfsetview(v);
        if (!xf)
            continue;
        for (auto &m : xv->rows)
            if (modified(m.pfx) && m.pli >= -1 && m.pli < nbli())
                commit_prefix(m, xffield_text(m.pfx, true, false));
    }
    for (int v = 0; v < (int)views.size(); v++) {
        xview *vw = views[(size_t)v];
        if (modified(vw->cmdfield)) {
            std::string t = xffield_text(vw->cmdfield, true, xflocale_utf8());
            for (auto &ch : t)
                if ((unsigned char)ch == 0)
                    ch = ' ';
            vw->cmdline = t;
            if (read_req && t.find_first_not_of(' ') != std::string::npos) {
                size_t end = t.find_last_not_of(' ');
                report("CMD", vw->cmdfield, vw->fileidx >= 0 ? vw->perfile[(size_t)vw->fileidx].curline : 0,
                       t.substr(0, end + 1));
            }
        }
    }
    xfsetview(save);
}

// The bytes of a typed character: UTF-8 in UTF-8 text, else one byte
// (empty when a byte cannot hold it).
std::string typed_bytes(int ch, bool utf8)
{
    if (!utf8)
        return ch <= 255 ? std::string(1, (char)ch) : std::string();
    char b[4];
    return std::string(b, (size_t)fs_utf8_put((uint32_t)ch, b));
}

// Puts a typed character at column col of a text: over the character there,
// or behind the end, the gap filled with blanks.
void put_char(std::string &t, int32_t col, const std::string &c, bool utf8)
{
    size_t at = (size_t)xfcol_off(t.data(), (int32_t)t.size(), col, utf8);
    if (t.size() < at)
        t.resize(at, ' ');
    if (t.size() > at) {
        int32_t next;
        xfcol_char(t.data(), (int32_t)t.size(), (int32_t)at, next, utf8);
        t.replace(at, (size_t)next - at, c);
    } else {
        t += c;
    }
}

// A character typed at a field's last cell: the line grows (AUTOEXP).
bool type_past_end(int ch)
{
    int id, line, col;
    asqcur(1, &id, &line, &col);
    where w = locate_field(id);
    if (w.fld == 1) {
        xfack();
        std::string c = typed_bytes(ch, xflocale_utf8());
        if (c.empty())
            return false;
        std::string &t = xv->cmdline;
        size_t at = (size_t)xfcol_off(t.data(), (int32_t)t.size(), std::max(0, col - 1), xflocale_utf8());
        t.insert(std::min(t.size(), at), c);
        xv->cmdcursor = col;
        if (xf)
            xf->ptcur_i.fld = 1;
        return true;
    }
    if (w.fld != 0 || !autoexp || !xf)
        return false;
    xfack();
    const xview::rowmap &m = xv->rows[(size_t)w.row];
    if (m.li < 0 || m.li >= nbli())
        return false;
    const xfline &l = xf->lines[m.li];
    std::string bytes = typed_bytes(ch, xf->utf8 != 0);
    if (bytes.empty())
        return false;
    std::string t(l.text, (size_t)l.len);
    int32_t at = m.col0 + col - 1; // the typed cell's column: overwritten
    put_char(t, at, bytes, xf->utf8 != 0);
    int save_group = xf->group_open;
    xf_do('r', t, m.li, "xf_ins");
    xf->group_open = save_group;
    xfcursor c = xf->ptcur_i;
    c.fld = 0;
    c.li = m.li;
    c.col = at + 1;
    c.prio = 30;
    xf->curstack.push_back(c);
    // Keep the cursor's column inside the view: shift by the view's width.
    xfviewfile &pf = xv->perfile[(size_t)xfidx];
    if (c.col - m.col0 >= m.len)
        pf.verify[0] = c.col - m.len / 2 + 1;
    typed_this_cycle = true;
    return true;
}

// A press or a release of a selection key; the read goes on after it. The
// key's own definition does not run: the key is the read cycle's.
void selection_key(int which, bool press)
{
    static const char *const label[SK_COUNT] = {"Commande PUT", "Commande GET", "Commande DEL"};
    read_cursor();
    xfack();
    if (press) {
        if (which != SK_DEL)
            xftrace(label[which]);
        selkey = selkey_state();
        selkey.held = which;
        // PUT copies at once; its release pastes once, if a drag chose where.
        if (which == SK_PUT && xfsel_file() >= 0)
            xfcom2("s_copy");
        return;
    }
    selkey_state was = selkey;
    selkey = selkey_state();
    if (was.held != which || !xf)
        return; // a release whose press this read cycle never saw
    if (which == SK_PUT && was.dragged) {
        xfcom2("s_paste");
    } else if (which == SK_GET && xfsel_file() >= 0) {
        // The selection goes to the mark, else to the cursor, else to the
        // start of the current line.
        int32_t li = std::max(0, curline()), col = 0;
        if (was.marked) {
            li = was.li;
            col = was.col;
        } else if (xf->ptcur_i.fld == 0 && xf->ptcur_i.li >= 0 && xf->ptcur_i.li < nbli()) {
            li = xf->ptcur_i.li;
            col = xf->ptcur_i.col;
        }
        if (xfcom2("s_copy") >= 0 && cmd_rc == 0 && nbli() > 0)
            xfcom2("s_paste i " + std::to_string(li + 1) + " " + std::to_string(col + 1));
    } else if (which == SK_DEL) {
        xftrace(label[which]);
        // Only what the mouse selected while the key was down is kept.
        xfsel_delete(was.dragged);
    }
}

void scroll(int64_t n)
{
    if (!xf)
        return;
    int64_t to = std::clamp<int64_t>(curline() + n, topline, std::max(topline, nbli() - 1));
    curline() = (int32_t)to;
}

// After a plain ENTER: a new line, or the cursor to the command line.
void xfautoi()
{
    if (nocmd) {
        nocmd = false;
        return;
    }
    if (!xf)
        return;
    xfcursor &pc = xf->ptcur_i;
    if (autoindent && pc.fld == 0 && pc.li >= 0 && pc.li < nbli()) {
        const xfline &l = xf->lines[pc.li];
        bool blank = l.len == 1 && l.text[0] == ' ';
        if (xfcol_off(l.text, l.len, pc.col, xf->utf8) >= l.len || blank) {
            int32_t indent = 0;
            while (indent < l.len && indent < 120 && l.text[indent] == ' ')
                indent++;
            xfadd(pc.li, 1, 1);
            xf->curstack.back().col = indent;
            // Keep the new line on the screen.
            if (!xv->rows.empty() && xv->rows.back().li <= pc.li + 1)
                curline() = std::min(curline() + 1, nbli() - 1);
            return;
        }
    }
    if (autoindent_stay && modes.enter_stay)
        return;
    if (pc.fld == 1)
        return;
    xfcursor c = pc;
    c.fld = 1;
    c.prio = 30;
    std::string_view cl = xv->cmdline;
    cl = cl.substr(0, cl.find_last_not_of(' ') + 1);
    xv->cmdcursor = std::min(xfcol_len(cl.data(), (int32_t)cl.size(), xflocale_utf8()), xv->ncols - 8);
    xf->curstack.push_back(c);
}

} // namespace

void xfack_commit() { xfack(); }

bool xfnext_queued(std::string &out)
{
    std::vector<std::string> &from = !cmd_queue.empty() ? cmd_queue : macro_stack_cmds;
    if (from.empty())
        return false;
    out = from.front();
    from.erase(from.begin());
    // A stacked command that fails can be seen on the command line.
    if (&from == &macro_stack_cmds && xv && !batch)
        xv->cmdline = out;
    return true;
}

void xfread(int toplevel)
{
    (void)toplevel;
    first_read = false;
    asr = released = false;
    nocmd = false;
    typed_this_cycle = false;
    for (;;) {
        int code = 0, value = 0, nmod = 0;
        if (fs_plat *l = fs_layer(); l && xf && xv) // lines -1 to nbli, top and end included
            l->scrollbar(nbli() + 2, curline() + 1, (long)xv->rows.size());
        // Only the editor's own read hands typing over a selection back:
        // the file list, the listings and dialogs read their pages alone.
        as_typehook = typed_over;
        asread(&code, &value, &nmod);
        as_typehook = nullptr;
        // A release read before this event is no part of it: the press that
        // ends the read after a release must still run its definition.
        released = false;
        aid = code;
        aid_value = value;
        if (code == 24) {
            if (selkey.held >= 0)
                selkey.dragged = true;
            drag_select();
            xfdisplay();
            continue;
        }
        drag.on = false;
        drag.pressed = false;
        if (code == 20) {
            int id, line, col;
            asqmou(1, &id, &line, &col);
            drag.pressed = file_cell(id, col, drag.li, drag.col);
            if (drag.pressed && selkey.held == SK_GET) {
                selkey.marked = true;
                selkey.li = drag.li;
                selkey.col = drag.col;
            }
        }
        // The left bank is the one whose releases are always told: a
        // selection key elsewhere acts as its definition says.
        if (int k = code == 8 || code == 18 ? xfkey_selection(code, value) : -1; k >= 0) {
            selection_key(k, code == 8);
            xfdisplay();
            continue;
        }
        switch (code) {
        case 23: // the window has gone: nothing is saved that was not saved
        case 672:
            xfexit(0);
        case 25:
            resized = true;
            return;
        case 42: case 67: // a focus change ends what a held selection key began
            selkey = selkey_state();
            continue;
        case 27: case 29: case 673:
            continue;
        case AS_TYPEDOVER: // typed over a pending selection: it takes the character's place
            read_cursor();
            xfack();
            if (xf && xf_cut(typed_bytes(value, xf->utf8 != 0)))
                typed_this_cycle = true;
            xfdisplay();
            continue;
        case 64:
            if (value == FS_PASTE_ID) {
                // Lines pasted into the terminal: text at the cursor, never
                // commands, whatever they say.
                std::string text;
                read_cursor();
                xfack();
                if (pl_paste_take(text) && xf) {
                    xfopen_groups();
                    xfpaste_text(text);
                }
                xfdisplay();
                continue;
            }
            [[fallthrough]];
        case 31: case 63: { // a menu item or a tool bar button
            std::string cmd = xfwin_command(code, value);
            if (cmd.empty()) { // nothing to run; a refusal may have its message
                xfdisplay();
                continue;
            }
            read_cursor();
            xfack();
            cmd_queue.push_back(cmd);
            return;
        }
        case DY_READCODE: // what was done in a dialog box goes to its macro
            read_cursor();
            xfack();
            dy_deliver();
            if (!cmd_queue.empty())
                return;
            xfdisplay();
            continue;
        case AS_NUDGED: // a child's output arrived: compose the page again
            read_cursor();
            xfack();
            if (xv)
                xv->msgkeep = true;
            xfdisplay();
            continue;
        case 40: // the scroll bar: its position is the new current line
            read_cursor();
            xfack();
            if (xf)
                curline() = std::clamp<int32_t>(value - 1, -1, nbli());
            xfdisplay();
            continue;
        case 32: // typed at a field's last cell
        case 36:
            read_cursor();
            if (!type_past_end(value))
                fsalrm();
            else
                xfdisplay(); // the line grew: lay the page out again
            continue;
        case 60: // typing changed the colours of the lines below
            read_cursor();
            xfack();
            xfdisplay();
            continue;
        case 47: case 48: // a cursor key at the edge of the file area
            read_cursor();
            xfack();
            scroll(code == 47 ? -std::max(1, modes.cursor) : std::max(1, modes.cursor));
            xfdisplay();
            continue;
        case FSK_WHEELUP: case FSK_WHEELDOWN: {
            read_cursor();
            xfack();
            // Plain: a few lines; Shift: more; Ctrl: to the end; both: a page.
            int dir = code == FSK_WHEELUP ? -1 : 1, mods = as_evmods & 3;
            int64_t n = mods == 1 ? wheel_lines[1]
                      : mods == 2 ? 2147483647LL
                      : mods == 3 ? std::max<int64_t>(1, (int64_t)xv->rows.size() - 1)
                                  : wheel_lines[0];
            scroll(dir * n);
            xfdisplay();
            continue;
        }
        case 11: case 18: case 19: case 21:
            read_cursor();
            xfack();
            released = true;
            continue;
        case 34: // RETURN: never runs the command line
            read_cursor();
            xfack();
            xfapply();
            nocmd = true;
            if (xf && xf->ptcur_i.fld == 0) {
                // The cursor's line splits at the cursor, and the last file
                // row scrolls so that the new line stays in sight.
                if (!xv->rows.empty() && xv->rows.back().li == xf->ptcur_i.li)
                    curline() = std::min(curline() + 1, nbli() - 1);
                int32_t li = xf->ptcur_i.li, lines = nbli();
                xfcom2("command c_split");
                // The cursor goes on to the new line, at its indentation.
                if (xf && nbli() == lines + 1 && li + 1 < nbli()) {
                    const xfline &nl = xf->lines[li + 1];
                    int32_t lead = 0;
                    while (lead < nl.len && nl.text[lead] == ' ')
                        lead++;
                    xfcursor cur = xf->ptcur_i;
                    cur.fld = 0;
                    cur.li = li + 1;
                    cur.col = lead;
                    cur.prio = 30;
                    xf->curstack.push_back(cur);
                }
            } else if (xf) {
                xf->ptcur_i.fld = 1;
                xf->ptcur_i.prio = 30;
            }
            return;
        case 0:
            asr = true;
            [[fallthrough]];
        default:
            read_cursor();
            xfack();
            xfapply(); // prefix entries before the command
            return;
        }
    }
}

namespace {

// Takes the one command of this turn and runs it.
void xfcom()
{
    xfopen_groups(); // the command is an undo group of its own
    std::string text;
    if (xfnext_queued(text)) {
        cmd_source = 2;
        xfcmdline(text);
        return;
    }
    if (released)
        return;
    std::string cmd;
    bool keep = false;
    if (!nocmd && xv) {
        cmd = xv->cmdline;
        if (cmd.find_first_not_of(' ') == std::string::npos)
            cmd.clear();
        if (!cmd.empty() && cmd[0] == '&') {
            keep = true;
            cmd.erase(0, 1);
        }
    }
    const xfkeydef *def = xfkey_for(aid, aid_value);
    int enter_state = xfkey_state(as_evmods & 1, (as_evmods >> 1) & 1, (as_evmods >> 2) & 1);
    if (asr && !def)
        def = xfkey_enter(enter_state);
    bool cmdran = false, defran = false;
    redisplay_done = 0;
    if (def)
        xfkey_run(cmd, def->def, 1, def->order, cmdran, defran, keep);
    if (!cmdran && !defran && asr && cmd.empty() && enter_state == 0)
        xfautoi();
    if ((cmdran || defran) && !keep && !redisplay_done && xv) {
        xv->cmdline.clear();
        xv->cmdcursor = 0;
    }
    if (keep && xv)
        xv->cmdline = "&" + cmd;
}

} // namespace

namespace {

// One turn of the loop: draw and read when nothing waits, then one command.
void xfx_turn()
{
    {
        xfcycle_begin();
        if (cmd_queue.empty() && macro_stack_cmds.empty()) {
            if (resized) {
                fsresize();
                xfgeom(false);
                resized = false;
            }
            xfdisplay();
            xfread(1);
        }
        xfcom();
        xfcycle_end();
        if (timeload)
            xftimeload("VORTA trace: xfx");
    }
}

} // namespace

void xfx()
{
    for (;;)
        xfx_turn();
}

void xfx_until(bool (*done)())
{
    // The file list lends the page to the editor this way, and takes it
    // back once `done` says so.
    while (!done())
        xfx_turn();
}

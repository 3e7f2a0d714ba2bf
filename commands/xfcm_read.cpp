// READ: a macro hands the screen to the user and gets back what was typed.
// The page is drawn and read as at the top level; what the fields held is
// reported on the macro's stack, or in its variables, instead of being run.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "fields/fields.h"
#include "rexx/run.h"
#include "session/xed.h"
#include "session/xfkeys.h"
#include "session/xfpage.h"

#include <algorithm>
#include <cstdio>

namespace {

enum : int { RD_CMDLINE, RD_ALL, RD_NOCHANGE };

struct read_opts {
    int what = RD_CMDLINE;  // which fields are reported
    bool number = false;    // each item gives its line number
    bool tag = true;        // each stacked item begins with its tag
    bool vars = false;      // variables rds_... instead of the stack
};

struct read_word {
    const char *name; // lower case
    size_t min;       // letters needed
    void (*apply)(read_opts &o);
};
constexpr read_word read_words[] = {
    {"all", 3, [](read_opts &o) { o.what = RD_ALL; }},
    {"nochange", 3, [](read_opts &o) { o.what = RD_NOCHANGE; }},
    {"cmdline", 3, [](read_opts &o) { o.what = RD_CMDLINE; }},
    {"number", 3, [](read_opts &o) { o.number = true; }},
    {"tag", 3, [](read_opts &o) { o.tag = true; }},
    {"notag", 5, [](read_opts &o) { o.tag = false; }},
    {"variables", 3, [](read_opts &o) { o.vars = true; }},
};

bool parse_opts(std::string_view ops, read_opts &o)
{
    for (std::string_view w = xfword(ops); !w.empty(); w = xfword(ops)) {
        const read_word *hit = nullptr;
        for (const read_word &r : read_words)
            if (abbrev(w, r.name, r.min))
                hit = &r;
        if (!hit)
            return false;
        hit->apply(o);
    }
    return true;
}

// The key that ended the read: "return" for ENTER, else the key's class
// letter and number, an F key's letter telling its shift (F, S, C, A).
std::string key_name()
{
    int cls = aid == 1 ? KC_F : aid == 8 ? KC_L : aid == 9 ? KC_R : -1;
    if (cls < 0 || key_class[cls].nbkeys <= 0)
        return "return";
    int nb = key_class[cls].nbkeys;
    int key = (aid_value - 1) % nb + 1, state = (aid_value - 1) / nb;
    static const char fstate[KEY_STATES] = {'F', 'S', 'C', 'A', 'S', 'S', 'C', 'S'};
    char letter = cls == KC_F ? fstate[std::clamp(state, 0, KEY_STATES - 1)] : key_class[cls].letter;
    return letter + std::to_string(key);
}

// "%s %d %d %d " and its shorter forms, then the text.
std::string stacked(const xfread_item &it, const read_opts &o)
{
    char head[64];
    int32_t n = it.li + 1;
    if (o.tag && o.number)
        std::snprintf(head, sizeof head, "%s %d %d %d ", it.tag, it.row, it.col, n);
    else if (o.tag)
        std::snprintf(head, sizeof head, "%s %d %d ", it.tag, it.row, it.col);
    else if (o.number)
        std::snprintf(head, sizeof head, "%d %d %d ", it.row, it.col, n);
    else
        std::snprintf(head, sizeof head, "%d %d ", it.row, it.col);
    return head + it.text;
}

void to_stack(const xfread_req &r, const read_opts &o)
{
    rx_stack_queue(o.tag ? "KEY " + key_name() : key_name());
    for (const xfread_item &it : r.items)
        rx_stack_queue(stacked(it, o));
}

void to_variables(const xfread_req &r)
{
    long lines = 0, prefixes = 0;
    std::string cmd;
    for (const xfread_item &it : r.items) {
        std::string n = std::to_string(it.li + 1);
        if (it.tag[0] == 'F') {
            lines++;
            rx_host_set("rds_num." + std::to_string(lines), n);
            rx_host_set("rds_cnt." + std::to_string(lines), it.text);
        } else if (it.tag[0] == 'P') {
            prefixes++;
            rx_host_set("rds_num_pre." + std::to_string(prefixes), n);
            rx_host_set("rds_cnt_pre." + std::to_string(prefixes), it.text);
        } else {
            cmd = it.text;
        }
    }
    rx_host_set("rds_num.0", std::to_string(lines));
    rx_host_set("rds_cnt.0", std::to_string(lines));
    rx_host_set("rds_num_pre.0", std::to_string(prefixes));
    rx_host_set("rds_cnt_pre.0", std::to_string(prefixes));
    rx_host_set("rds_cmd", cmd);
    rx_host_set("rds_key", key_name());
}

// A read of the page as at the top level, until a key or ENTER ends it; a
// resize lays the page out again and goes on reading.
void read_page(xfread_req &r)
{
    xfread_req *outer = read_req;
    read_req = &r;
    for (;;) {
        xfdisplay();
        xfread(0);
        if (aid != 25)
            break;
        fsresize();
        xfgeom(false);
    }
    read_req = outer;
}

} // namespace

// READ [ALL|NOCHANGE|CMDLINE [NUMBER]] [TAG|NOTAG] [VARiables]
int xfcm_read(const xfcmd &c)
{
    xftrace("Commande xfcm_read");
    if (!xfmacro_active())
        return 1;
    read_opts o;
    if (!parse_opts(c.ops(), o)) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return 1;
    }
    if (batch) {
        // No screen to read: nothing typed, and the macro hears so.
        cmd_rc = 1;
        return 1;
    }
    xfread_req r;
    r.all = o.what != RD_CMDLINE;
    r.commit = o.what != RD_NOCHANGE;
    read_page(r);
    // The command line was the macro's to read, not to run.
    for (xview *w : views)
        w->cmdline.clear();
    std::stable_sort(r.items.begin(), r.items.end(), [](const xfread_item &a, const xfread_item &b) {
        return a.row != b.row ? a.row < b.row : a.col < b.col;
    });
    if (o.vars)
        to_variables(r);
    else
        to_stack(r, o);
    cmd_rc = 0;
    return 1;
}

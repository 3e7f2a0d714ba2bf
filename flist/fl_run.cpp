// The commands typed on lines: their states, the `=` repeat, and the
// substitution of /d, /n and /t by the entry's directory, stem and type.
#include "flist/flist.h"

#include <algorithm>

std::string fl_quote(std::string_view text)
{
    std::string q = "\"";
    for (char c : text) {
        if (c == '"')
            q += '\\';
        q += c;
    }
    return q + "\"";
}

namespace {

bool blank(char c) { return c == ' ' || c == '\t'; }

// What /x stands for; "" when x is no substitution.
std::string form(char x, const std::string &path)
{
    std::string base = fl_basename(path);
    std::string_view stem, ext;
    fl_split(base, stem, ext);
    switch (x) {
    case 'd': case 'D': return fl_quote(fl_dirname(path));
    case 'n': case 'N': return stem.empty() ? "." : fl_quote(stem);
    case 't': case 'T': return ext.empty() ? "." : fl_quote(ext.substr(1));
    default: return "";
    }
}

} // namespace

std::string fl_subst(std::string_view text, const std::string &path)
{
    std::string out;
    for (size_t i = 0; i < text.size(); i++) {
        // A form stands alone: after a blank or at the start, and followed
        // by a blank or the end, so that a/b and x/d pass as typed.
        bool alone = text[i] == '/' && (i == 0 || blank(text[i - 1])) && i + 1 < text.size() &&
                     (i + 2 == text.size() || blank(text[i + 2]));
        std::string f = alone ? form(text[i + 1], path) : "";
        if (f.empty()) {
            out += text[i];
            continue;
        }
        out += f;
        i++;
    }
    return out;
}

void fl_say(const std::string &text)
{
    if (fl_levels.empty()) {
        return;
    }
    fl_level &lv = fl_levels.back();
    if (lv.msg.empty()) {
        lv.msg = text;
        return;
    }
    // Earlier messages of a run move to the spare lines under the list.
    lv.notes.push_back(lv.msg);
    if (lv.notes.size() > 5)
        lv.notes.erase(lv.notes.begin());
    lv.msg = text;
}

bool fl_run_lines()
{
    const unsigned gen = fl_generation;
    fl_level &lv = fl_levels.back();
    const size_t depth = fl_levels.size();
    fl_cancelled = false;
    // The order is taken now: a command may add entries to the list.
    std::vector<int32_t> order = lv.list.order;
    for (size_t k = 0; k < order.size(); k++) {
        size_t i = size_t(order[k]);
        std::string t = lv.list.cmd[i];
        if (t.find_first_not_of(' ') == std::string::npos || std::string_view("*?!#").find(t[0]) != std::string_view::npos)
            continue;
        if (fl_cancelled) {
            lv.list.cmd[i] = "!" + t;
            continue;
        }
        std::string run = t;
        if (run.find_first_not_of(' ') == run.find('=') && run.find_first_not_of(" =") == std::string::npos) {
            if (lv.lastcmd.empty()) {
                fl_say(".... = needs an upper command");
                lv.list.cmd[i] = "?" + t;
                continue;
            }
            run = lv.lastcmd;
        }
        lv.list.cmd[i] = "*" + run;
        lv.lastcmd = run;
        int keep = fl_line_command(i, run);
        if (fl_levels.size() < depth)
            return true;
        if (keep)
            lv.list.cmd[i] = "?" + run;
        // A new level met during the run ends it: the lines below wait.
        if (fl_generation != gen && !fl_cancelled)
            return true;
    }
    fl_cancelled = false;
    return false;
}

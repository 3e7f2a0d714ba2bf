// The editor's commands of the file list: FLIST and its forms, FLQuit and
// END inside a list, the settings FLDATE, FLPP and FLAth, FLFile and XFL.
#include "flist/fl_handlers.h"
#include "flist/flist.h"

#include "commands/commands.h"
#include "commands/internal.h"
#include "fields/fields.h"
#include "session/xed.h"

#include <cstdio>
#include <strings.h>
#include <unistd.h>

namespace {

std::string here()
{
    char buf[4096];
    return getcwd(buf, sizeof buf) ? std::string(buf) : startdir;
}

int start(const xfcmd &c, int filter, bool recursive)
{
    cmd_rc = 0;
    // FLIST alone in the editor that a list lent its page to gives the
    // page back to that list.
    if (fl_running > 0 && fs_curpage() != FL_PAGE && xftrim(c.ops()).empty() && filter == FL_ALL && !recursive) {
        fl_switch_back = true;
        return 1;
    }
    flcom(c.ops(), here(), filter, recursive);
    return 1;
}

} // namespace

namespace {

// FLIST and its forms differ only in what they list.
struct form {
    const char *trace;
    int filter;
    bool recursive;
};
constexpr form forms[] = {
    {"Commande xfcm_flist", FL_ALL, false},
    {"Commande xfcm_rflist", FL_ALL, true},
    {"Commande xfcm_dflist", FL_DIRSONLY, false},
    {"Commande xfcm_fflist", FL_FILESONLY, false},
};
template <int K> int flist_form(const xfcmd &c)
{
    xftrace(forms[K].trace);
    return start(c, forms[K].filter, forms[K].recursive);
}

} // namespace

int xfcm_flist(const xfcmd &c) { return flist_form<0>(c); }
int xfcm_rflist(const xfcmd &c) { return flist_form<1>(c); }
int xfcm_dflist(const xfcmd &c) { return flist_form<2>(c); }
int xfcm_fflist(const xfcmd &c) { return flist_form<3>(c); }

int xfcm_flquit(const xfcmd &c)
{
    xftrace("Commande xfcm_flquit");
    (void)c;
    if (fl_running == 0) {
        xfmsgs(".... No FLIST level to quit", 1);
        cmd_rc = 1;
        return 1;
    }
    // From the editor a list lent its page to, the level ends as well.
    fl_end_level = true;
    fl_switch_back = true;
    return 1;
}

int xfcm_end(const xfcmd &c)
{
    xftrace("Commande xfcm_end");
    if (fl_running == 0)
        return xfcm_notimpl(c);
    return xfcm_flquit(c);
}

int xfcm_fldate(const xfcmd &c)
{
    xftrace("Commande xfcm_fldate");
    std::string_view w = xftrim(c.ops());
    if (w.empty())
        xfmsg(fl_europe ? 31 : 201, 0);
    else if (strncasecmp(std::string(w).c_str(), "europe", w.size()) == 0 && w.size() >= 2)
        fl_europe = 1;
    else
        fl_europe = 0;
    for (fl_level &lv : fl_levels)
        lv.rebuild = true;
    return 1;
}

int xfcm_flpp(const xfcmd &c)
{
    xftrace("Commande xfcm_flpp");
    return xfonoff(c, fl_parent);
}

int xfcm_flath(const xfcmd &c)
{
    xftrace("Commande xfcm_flath");
    xfonoff(c, fl_attrs);
    for (fl_level &lv : fl_levels)
        lv.rebuild = true;
    return 1;
}

int xfcm_flfile(const xfcmd &c)
{
    xftrace("Commande xfcm_flfile");
    (void)c;
    if (fl_levels.empty()) {
        xfmsgs(".... No FLIST level to write", 1);
        cmd_rc = 1;
        return 1;
    }
    // The shown level's paths, one a line in display order, for the editor.
    const fl_level &lv = fl_levels.back();
    std::string out = here() + "/flist.file";
    FILE *f = std::fopen(out.c_str(), "w");
    bool ok = f != nullptr;
    for (size_t k = 0; ok && k < lv.list.order.size(); k++) {
        size_t i = size_t(lv.list.order[k]);
        const std::string &p = fl_is_parent(lv.list, i) ? fl_dirs[size_t(lv.list.dir[i])] : lv.list.name[i];
        ok = std::fprintf(f, "%s\n", p.c_str()) >= 0;
    }
    if (f)
        ok = std::fclose(f) == 0 && ok;
    if (!ok) {
        fl_say("..... Unable to write " + out);
        cmd_rc = 1;
        return 1;
    }
    fl_edit("xed " + fl_quote(out));
    return 1;
}

int xfcm_xfl(const xfcmd &c)
{
    xftrace("Commande xfcm_xfl");
    std::string name(xftrim(c.ops()));
    if (name.empty())
        return 1;
    // A name without an extension is a file-list macro's.
    std::string base = name.substr(name.rfind('/') == std::string::npos ? 0 : name.rfind('/') + 1);
    if (base.find('.') == std::string::npos)
        name += ".flist";
    return xfcom2("xed " + fl_quote(name)), 1;
}

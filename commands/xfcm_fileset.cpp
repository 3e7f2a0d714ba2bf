// The settings of loading and saving as commands: AUTOBin, KEEPBlanks,
// BInary, ENCoding, LIMIT, FILEConv, ISOConv, BACKUP, PRESERVLinks, SAVEClearundo,
// AUtosave, RECycle, LASTFiles and RW.  With no operand each one reports its
// state.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "session/xed.h"

#include <cstdio>
#include <sys/stat.h>

namespace {


void report(const char *fmt, const char *a, const char *b = "", const char *c = "")
{
    char m[1400];
    std::snprintf(m, sizeof m, fmt, a, b, c);
    xfmsgs(m, 0);
}

// A per-file switch that also sets the override new files take.
int file_switch(const xfcmd &c, int32_t xfile::*field, int &global)
{
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty())
        return xfreport_onoff(xf ? xf->*field : global > 0);
    int v = xfonoff_word(w);
    if (v < 0 || !xfword(rest).empty()) {
        return xfbad();
    }
    global = v ? 1 : -1;
    if (xf)
        xf->*field = v;
    return 1;
}

constexpr struct {
    const char *word; // FILEConv word
    int value;        // eol_kind or reading mode
} conv_words[] = {{"windows", 0}, {"unix", 1}, {"auto", 2}};

int conv_value(std::string_view w)
{
    std::string f = xffold(w);
    for (auto &c : conv_words)
        if (f == c.word)
            return c.value;
    return -1;
}

const char *conv_name(int v)
{
    for (auto &c : conv_words)
        if (c.value == v)
            return c.word;
    return "?";
}

} // namespace

int xfcm_autobin(const xfcmd &c)
{
    xftrace("Commande xfcm_autobin");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty())
        return xfreport_onoff(autobin);
    int v = xfonoff_word(w);
    // Behind ON, the control bytes that leave a file text: at least five.
    std::string allowed;
    long b;
    for (std::string_view x; !(x = xfword(rest)).empty();) {
        if (!xfnumber(x, b) || b < 0 || b > 31) {
            return xfbad();
        }
        allowed += (char)b;
    }
    if (v < 0 || (!allowed.empty() && (v == 0 || allowed.size() < 5))) {
        return xfbad();
    }
    autobin = v;
    if (!allowed.empty())
        autobin_allowed = allowed;
    return 1;
}

int xfcm_keepblanks(const xfcmd &c)
{
    xftrace("Commande xfcm_keepblanks");
    return file_switch(c, &xfile::keepblanks, keepblanks_global);
}

int xfcm_binary(const xfcmd &c)
{
    xftrace("Commande xfcm_binary");
    file_switch(c, &xfile::bin, bin_global);
    if (xf && xf->bin)
        xf->keepblanks = 1;
    return 1;
}

// ENCoding UTF8|BYTES: the current file's text is UTF-8 (a column is a
// character) or bytes (a column is a byte, shown as Latin-1), and so is that
// of the files loaded from now on; AUTO lets each file's bytes decide again.
// With no operand: the current file's encoding.
constexpr const char *encodings[] = {"BYTES", "UTF8", "AUTO"}; // by value, AUTO -1

int xfcm_encoding(const xfcmd &c)
{
    xftrace("Commande xfcm_encoding");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty()) {
        int v = xf ? xf->utf8 : utf8_global;
        report("..... Is %s", encodings[v < 0 ? 2 : v]);
        return 1;
    }
    int v = -2;
    for (int i = 0; i < 3; i++)
        if (xffold(w) == xffold(encodings[i]))
            v = i == 2 ? -1 : i;
    if (v == -2 || !xfword(rest).empty()) {
        return xfbad();
    }
    utf8_global = v;
    if (xf)
        xf->utf8 = v < 0 ? xftext_mode() : v;
    return 1;
}

int xfcm_rw(const xfcmd &c)
{
    xftrace("Commande xfcm_rw");
    if (!xf)
        return 1;
    int rw = xf->rw;
    xfonoff(c, rw);
    xf->rw = rw;
    return 1;
}

int xfcm_limit(const xfcmd &c)
{
    xftrace("Commande xfcm_limit");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty()) {
        char m[64];
        std::snprintf(m, sizeof m, "..... Is %lld", (long long)load_limit);
        xfmsgs(m, 0);
        return 1;
    }
    long long v = 0;
    for (char ch : w) {
        if (ch < '0' || ch > '9' || v > (INT64_MAX - 9) / 10) {
            return xfbad();
        }
        v = v * 10 + (ch - '0');
    }
    if (!xfword(rest).empty()) {
        return xfbad();
    }
    load_limit = v;
    return 1;
}

int xfcm_fileconv(const xfcmd &c)
{
    xftrace("Commande xfcm_fileconv");
    std::string_view rest = c.ops();
    std::string_view w1 = xfword(rest), w2 = xfword(rest), w3 = xfword(rest);
    if (w1.empty()) {
        report("..... Is %s %s %s", conv_name(xf ? xf->eol_kind : eol_default), conv_name(fileconv_read),
               conv_name(eol_empty));
        return 1;
    }
    int a = conv_value(w1), b = w2.empty() ? fileconv_read : conv_value(w2);
    int e = w3.empty() ? eol_empty : conv_value(w3);
    if (a < 0 || a > 1 || b < 1 || e < 0 || e > 1 || !xfword(rest).empty()) {
        return xfbad();
    }
    eol_default = a;
    if (xf)
        xf->eol_kind = a;
    fileconv_read = b;
    eol_empty = e;
    return 1;
}

int xfcm_isoconv(const xfcmd &c)
{
    xftrace("Commande xfcm_isoconv");
    int on = isoconv;
    xfonoff(c, on);
    if (on != isoconv)
        xfisoconv_set(on);
    return 1;
}

int xfcm_backup(const xfcmd &c)
{
    xftrace("Commande xfcm_backup");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty()) {
        report(backup_on ? "..... Is ON %s %s" : "..... Is OFF %s %s", bak_suffix.c_str(),
               reload_suffix.c_str());
        return 1;
    }
    int v = xfonoff_word(w);
    std::string_view s1 = xfword(rest), s2 = xfword(rest);
    if (v < 0 || !xfword(rest).empty()) {
        return xfbad();
    }
    backup_on = v;
    if (!s1.empty())
        bak_suffix = reload_suffix = std::string(s1);
    if (!s2.empty())
        reload_suffix = std::string(s2);
    return 1;
}

int xfcm_preservlinks(const xfcmd &c)
{
    xftrace("Commande xfcm_preservlinks");
    return xfonoff(c, preservlinks);
}

int xfcm_saveclearundo(const xfcmd &c)
{
    xftrace("Commande xfcm_saveclearundo");
    return xfonoff(c, saveclearundo);
}

int xfcm_recycle(const xfcmd &c)
{
    xftrace("Commande xfcm_recycle");
    return xfonoff(c, recycle_on);
}

int xfcm_lastfiles(const xfcmd &c)
{
    xftrace("Commande xfcm_lastfiles");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (w.empty())
        return xfreport_onoff(lastfiles_on);
    int v = xfonoff_word(w);
    std::string_view n = xfword(rest);
    long count = lastfiles_max;
    if (v < 0 || (!n.empty() && (!xfnumber(n, count) || count < 1)) || !xfword(rest).empty()) {
        return xfbad();
    }
    lastfiles_on = v;
    lastfiles_max = (int)count;
    return 1;
}

int xfcm_autosave(const xfcmd &c)
{
    xftrace("Commande xfcm_autosave");
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest), d = xfword(rest);
    if (w.empty()) {
        char m[1300];
        if (autosave_count)
            std::snprintf(m, sizeof m, "..... is %d %s", autosave_count, autosave_dir.c_str());
        else
            std::snprintf(m, sizeof m, "..... is OFF %s", autosave_dir.c_str());
        xfmsgs(m, 0);
        return 1;
    }
    long n = 0;
    if (xfonoff_word(w) != 0 && (!xfnumber(w, n) || n < 1)) {
        return xfbad();
    }
    if (!xfword(rest).empty()) {
        return xfbad();
    }
    if (!d.empty()) {
        struct stat st;
        std::string dir(d);
        if (stat(dir.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) {
            xfmsg(8, 1);
            cmd_rc = 1;
            return 1;
        }
        autosave_dir = dir.back() == '/' ? dir : dir + "/";
    }
    autosave_count = (int)n;
    return 1;
}

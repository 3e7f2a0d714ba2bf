// Key commands: REMap (one key acts as another), SCKeys (the quit and do
// keys of the scrolling pages), KEYboard (a keyboard table file for the
// field manager), the keyboard file looked for at start from TERM, and the
// start-up of the key tables, which opens SET to the key grammar.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "fields/fields.h"
#include "session/xed.h"
#include "session/xfkeys.h"

#include <cstdlib>
#include <sys/stat.h>

extern int (*xfsetkey_hook)(std::string_view name, std::string_view def); // SET's key path

namespace {

int refuse(int msg)
{
    xfmsg(msg, 1);
    cmd_rc = 1;
    return 1;
}

std::string ref_name(const xfkeyref &r)
{
    static const char *const prefixes[KEY_STATES] = {"", "S-", "C-", "M-", "S+C-", "S+M-", "C+M-", "S+C+M-"};
    return prefixes[r.state] + std::string(1, key_class[r.cls].letter) + std::to_string(r.key);
}

// "f12", "F12" or "12": a function key number within the F class.
bool fkey_number(std::string_view w, int &out)
{
    if (!w.empty() && (w.front() == 'f' || w.front() == 'F'))
        w.remove_prefix(1);
    long n;
    if (!xfnumber(w, n) || n < 1 || n > key_class[KC_F].nbkeys)
        return false;
    out = int(n);
    return true;
}

// Names a file the way commands name files: "~" is the home directory.
std::string resolve(std::string_view name)
{
    const char *home = getenv("HOME");
    if (name.size() >= 1 && name.front() == '~' && home && (name.size() == 1 || name[1] == '/'))
        return std::string(home) + std::string(name.substr(1));
    return std::string(name);
}

bool exists(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

} // namespace

// REMap n a1 .. an b1 .. bn
int xfcm_remap(const xfcmd &c)
{
    xftrace("Commande xfcm_remap");
    std::string_view rest = c.ops();
    std::string_view first = xfword(rest);
    if (first.empty()) {
        std::string shown = "REMAP " + std::to_string(key_remap_from.size());
        for (const auto *side : {&key_remap_from, &key_remap_to})
            for (const xfkeyref &r : *side)
                shown += " " + ref_name(r);
        xfmsgs(shown, 0);
        return 1;
    }
    long n;
    if (!xfnumber(first, n) || n < 0 || n > 1000)
        return refuse(16);
    std::vector<xfkeyref> keys;
    for (std::string_view w = xfword(rest); !w.empty(); w = xfword(rest)) {
        xfkeyref r;
        if (!xfkey_parse_ref(w, r))
            return refuse(16);
        keys.push_back(r);
    }
    if (keys.size() != size_t(2 * n))
        return refuse(16);
    key_remap_from.assign(keys.begin(), keys.begin() + n);
    key_remap_to.assign(keys.begin() + n, keys.end());
    return 1;
}

// SCKeys [q d]
int xfcm_sckeys(const xfcmd &c)
{
    xftrace("Commande xfcm_sckeys");
    std::string_view rest = c.ops();
    std::string_view a = xfword(rest), b = xfword(rest);
    if (a.empty()) {
        char buf[64];
        snprintf(buf, sizeof buf, "..... KEY_QUIT = F%d   KEY_DO = F%d ", sckey_quit, sckey_do);
        xfmsgs(buf, 0);
        return 1;
    }
    int q, d;
    if (!fkey_number(a, q) || !fkey_number(b, d) || !xftrim(rest).empty())
        return refuse(16);
    sckey_quit = q;
    sckey_do = d;
    return 1;
}

// KEYboard name [1|2]
int xfcm_key(const xfcmd &c)
{
    xftrace("Commande xfcm_key");
    std::string_view rest = c.ops();
    std::string_view name = xfword(rest), type = xfword(rest);
    if (name.empty() || !xftrim(rest).empty())
        return refuse(16);
    int t = 0;
    if (!type.empty()) {
        if (type != "1" && type != "2")
            return refuse(48);
        t = type[0] - '0';
    }
    std::string path = resolve(name);
    if (asfkeyb(path.c_str(), t) != 0) {
        xfmsgs(as_lastmsg, 1);
        cmd_rc = 1;
    }
    return 1;
}

int xfkeys_term()
{
    const char *term = getenv("TERM");
    if (!term || !*term)
        return 0;
    std::string name = std::string("keyboard/terminfo/") + term[0] + "/" + term + ".esc";
    for (const std::string &dir : {installdir, std::string("./")}) {
        std::string path = dir + name;
        if (!exists(path))
            continue;
        xfmsgs(".... Loading " + path, 0);
        if (asfkeyb(path.c_str(), 0) != 0) {
            xfmsgs(as_lastmsg, 1);
            return 1;
        }
        xfmsgs(".... Loaded", 0);
        return 0;
    }
    xfmsgs("Warning: no " + name + " file available", 2);
    return 1;
}

void xfkeys_init()
{
    xfkeys_reset();
    xfsetkey_hook = xfsetkey;
}

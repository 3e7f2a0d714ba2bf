// The SET grammar of keys: a key name with its shift prefix, an optional
// order word and the definition; the key words beside it (NBKEYS, SERVER,
// BACKSPACE and the field keys); and xfkey_run, which runs a key press's
// definition and the command line's text in the key's order.
#include "session/xfkeys.h"

#include "commands/commands.h"
#include "fields/fields.h"
#include "session/xed.h"

#include <cctype>

int (*xfkey_exec)(std::string_view text) = [](std::string_view text) {
    return xfcmdline(text);
};

namespace {

std::string fold(std::string_view s)
{
    std::string r(s);
    for (char &ch : r)
        ch = char(tolower((unsigned char)ch));
    return r;
}

// What a key name names.
enum kind : int { K_CLASS, K_CHAR, K_ENTER };

struct keyname {
    kind what = K_CLASS; // class key, character key or ENTER
    int state = 0;       // shift state
    int cls = -1;        // KC_* for a class key
    int key = 0;         // key number, or the character
};

// Outcome of a parse: a key, a key-shaped word that is wrong, or no key word.
enum parsed : int { P_OK, P_BAD, P_NOTKEY };

// Named keys of the R class: the field manager numbers the R keys from Print
// Screen on, so the names follow from its key codes.
struct named_key {
    const char *name; // lower case
    int key;          // R key number
};
constexpr int rkey(int code) { return code - FSK_PRINT + 1; }
constexpr named_key named_keys[] = {
    {"leftarrow", rkey(FSK_LEFT)},   {"rightarrow", rkey(FSK_RIGHT)},
    {"uparrow", rkey(FSK_UP)},       {"downarrow", rkey(FSK_DOWN)},
    {"home", rkey(FSK_HOME)},        {"pageup", rkey(FSK_PGUP)},
    {"pagedown", rkey(FSK_PGDN)},    {"printscreen", rkey(FSK_PRINT)},
    {"scrolllock", rkey(FSK_SCROLL)}, {"pause", rkey(FSK_PAUSE)},
};
static_assert(sizeof named_keys / sizeof named_keys[0] == 10, "ten named keys");

constexpr const char *order_names[4] = {"only", "after", "before", "ignore"};

// prefix := s- | c- | m- | l- | r- | x+y- | x+y+z-   (x, y, z distinct of s c m)
// Returns the characters taken (0 without a prefix), -1 when malformed.
int take_prefix(std::string_view w, int &state)
{
    state = 0;
    if (w.size() < 3)
        return 0;
    auto bit = [](char ch) {
        switch (tolower((unsigned char)ch)) {
        case 's': return 1;
        case 'c': return 2;
        case 'm': return 4;
        default: return 0;
        }
    };
    char first = char(tolower((unsigned char)w[0]));
    if (w[1] == '-') {
        if (first == 'l' || first == 'r') {
            state = 3;
            return 2;
        }
        int b = bit(first);
        if (!b)
            return 0;
        state = xfkey_state(b & 1, b & 2, b & 4);
        return 2;
    }
    if (w[1] != '+' || !bit(first))
        return 0;
    int bits = 0;
    size_t i = 0;
    for (int n = 0; n < 3; n++) {
        int b = i < w.size() ? bit(w[i]) : 0;
        if (!b || (bits & b) || i + 1 >= w.size())
            return -1;
        bits |= b;
        char sep = w[i + 1];
        i += 2;
        if (sep == '-') {
            if (n == 0)
                return -1;
            state = xfkey_state(bits & 1, bits & 2, bits & 4);
            return int(i);
        }
        if (sep != '+')
            return -1;
    }
    return -1;
}

// A key number: digits only, 1 to the class's count.
parsed key_number(std::string_view digits, int cls, int &key)
{
    if (digits.empty())
        return P_NOTKEY;
    for (char ch : digits)
        if (!isdigit((unsigned char)ch))
            return P_NOTKEY;
    if (digits.size() > 3)
        return P_BAD;
    key = 0;
    for (char ch : digits)
        key = key * 10 + (ch - '0');
    return key >= 1 && key <= key_class[cls].nbkeys ? P_OK : P_BAD;
}

// key := enter | escape | c | pf<n> | f<n> | l<n> | r<n> | named key
parsed parse_key(std::string_view w, keyname &k)
{
    int took = take_prefix(w, k.state);
    if (took < 0)
        return P_BAD;
    bool prefixed = took > 0;
    std::string_view body = w.substr(size_t(took));
    parsed miss = prefixed ? P_BAD : P_NOTKEY;
    if (body.size() == 1) {
        // Characters go to the Ctrl and Alt tables, so they need one of those.
        if (!prefixed)
            return P_NOTKEY;
        if (k.state != 2 && k.state != 3)
            return P_BAD;
        k.what = K_CHAR;
        k.key = (unsigned char)body[0];
        return P_OK;
    }
    std::string b = fold(body);
    if (b == "enter") {
        k.what = K_ENTER;
        return P_OK;
    }
    if (b == "escape") {
        if (k.state != 0 && k.state != 2 && k.state != 3)
            return P_BAD;
        if (k.state == 0)
            k.state = 2; // Escape is Ctrl with '['
        k.what = K_CHAR;
        k.key = 27;
        return P_OK;
    }
    for (const named_key &n : named_keys)
        if (b == n.name) {
            k.cls = KC_R;
            k.key = n.key;
            return n.key <= key_class[KC_R].nbkeys ? P_OK : P_BAD;
        }
    if (b.size() >= 3 && b[0] == 'p' && b[1] == 'f') {
        k.cls = KC_F;
        parsed p = key_number(std::string_view(b).substr(2), KC_F, k.key);
        if (p == P_OK && prefixed)
            return P_BAD; // shifted function keys take the prefix form
        return p == P_NOTKEY ? miss : p;
    }
    static const char letters[KC_COUNT] = {'l', 'f', 'r'};
    for (int c = 0; c < KC_COUNT; c++)
        if (b[0] == letters[c]) {
            k.cls = c;
            parsed p = key_number(std::string_view(b).substr(1), c, k.key);
            return p == P_NOTKEY ? miss : p;
        }
    return miss;
}

int bad()
{
    xfmsg(16, 1);
    cmd_rc = 1;
    return 1;
}

bool is_order_word(std::string_view w, int &order)
{
    std::string f = fold(w);
    for (int o = 0; o < 4; o++)
        if (f == order_names[o]) {
            order = o;
            return true;
        }
    return false;
}

// Definitions that read the command line themselves run alone.
bool reads_command_line(std::string_view def)
{
    if (def.empty())
        return false;
    if (def.front() == '?' || def.front() == '=')
        return true;
    std::string_view rest = def;
    return abbrev(xfword(rest), "complete", 5);
}

// The key words that are not key names, each with its operands.
int set_nbkeys(std::string_view ops)
{
    long n[3];
    for (long &v : n) {
        std::string_view w = xfword(ops);
        bool neg = !w.empty() && w.front() == '-';
        if (neg)
            w.remove_prefix(1);
        if (!xfnumber(w, v) || v > 1000000)
            return bad();
        if (neg)
            v = -v;
    }
    if (!xftrim(ops).empty())
        return bad();
    return xfkeys_nbkeys(int(n[0]), int(n[1]), int(n[2]));
}

int set_server(std::string_view ops)
{
    std::string_view name = xfword(ops);
    if (!xftrim(ops).empty())
        return bad();
    return xfkeys_server(name);
}

int set_backspace(std::string_view ops)
{
    std::string w = fold(xftrim(ops));
    int code = w == "^h" ? 8 : w == "^?" ? 127 : -1;
    if (code < 0)
        return bad();
    key_backspace = code;
    as_bskey = code;
    as_delkey = code == 8 ? 127 : 8;
    return 0;
}

int set_field_key(int which, std::string_view ops)
{
    std::string_view name = xfword(ops);
    if (!xftrim(ops).empty())
        return bad();
    xfkeyref r;
    if (!name.empty() && !xfkey_parse_ref(name, r))
        return bad();
    key_field[which] = r;
    return 0;
}

// Which key word the name is: 0 NBKEYS, 1 SERVER, 2 BACKSPACE, 3 + FK_* a
// field key; -1 none.
int key_word(std::string_view name)
{
    std::string f = fold(name);
    if (f == "nbkeys")
        return 0;
    if (f == "server")
        return 1;
    if (f == "backspace")
        return 2;
    for (int i = 0; i < FK_COUNT; i++)
        if (f == fold(field_key_names[i]))
            return 3 + i;
    return -1;
}

void store(const keyname &k, std::string_view def, int order)
{
    xfkeydef d{std::string(def), order};
    switch (k.what) {
    case K_ENTER:
        key_enter[k.state] = d;
        break;
    case K_CHAR:
        key_chars[k.state == 3 ? 1 : 0][k.key] = d;
        xfkeys_altmarks();
        break;
    case K_CLASS:
        key_class[k.cls].slot[xfkey_slot(k.cls, k.key, k.state)] = d;
        xfkeys_rederive(k.cls, k.key);
        break;
    }
}

// The whole line: 0 done, 1 refused with a message, 2 no key word.
int set_line(std::string_view text, int *keyword_end, int *def_start, int *def_end)
{
    size_t b = text.find_first_not_of(' ');
    text = b == std::string_view::npos ? std::string_view() : text.substr(b);
    size_t e = text.find(' ');
    std::string_view name = text.substr(0, e);
    std::string_view rest = e == std::string_view::npos ? std::string_view() : text.substr(e);
    if (keyword_end)
        *keyword_end = int(b == std::string_view::npos ? 0 : b + name.size());
    int word = key_word(name);
    switch (word) {
    case -1: break;
    case 0: return set_nbkeys(rest);
    case 1: return set_server(rest);
    case 2: return set_backspace(rest);
    default: return set_field_key(word - 3, rest);
    }
    keyname k;
    parsed p = parse_key(name, k);
    if (p == P_NOTKEY)
        return 2;
    if (p == P_BAD)
        return bad();
    // [order] [definition], the definition up to the end of the line.
    std::string_view r = rest;
    size_t s0 = r.find_first_not_of(' ');
    r = s0 == std::string_view::npos ? std::string_view() : r.substr(s0);
    std::string_view probe = r;
    std::string_view w = xfword(probe);
    int order = KO_BEFORE;
    bool worded = is_order_word(w, order);
    if (worded) {
        size_t s1 = probe.find_first_not_of(' ');
        r = s1 == std::string_view::npos ? std::string_view() : probe.substr(s1);
    }
    size_t last = r.find_last_not_of(' ');
    std::string_view def = last == std::string_view::npos ? std::string_view() : r.substr(0, last + 1);
    if (!worded && reads_command_line(def))
        order = KO_ONLY;
    if (def_start)
        *def_start = int(def.data() && !def.empty() ? def.data() - text.data() + b : text.size() + b);
    if (def_end && def_start)
        *def_end = *def_start + int(def.size());
    store(k, def, order);
    return 0;
}

} // namespace

bool xfkey_parse_ref(std::string_view name, xfkeyref &out)
{
    keyname k;
    if (parse_key(name, k) != P_OK || k.what != K_CLASS)
        return false;
    out = {k.cls, k.key, k.state};
    return true;
}

int xfset_key(const char *text, int len, int *keyword_end, int *def_start, int *def_end)
{
    int r = set_line(std::string_view(text, size_t(len)), keyword_end, def_start, def_end);
    if (r == 2)
        return bad();
    return r;
}

int xfsetkey(std::string_view name, std::string_view rest)
{
    keyname k;
    if (key_word(name) < 0 && parse_key(name, k) == P_NOTKEY)
        return 1;
    if (batch)
        return 0; // no keyboard: accepted and ignored
    std::string line(name);
    line += ' ';
    line += rest;
    set_line(line, nullptr, nullptr, nullptr);
    return 0;
}

int xfkey_run(std::string_view cmd, std::string_view def, int source, int order,
              bool &cmdran, bool &defran, bool keep)
{
    cmdran = defran = false;
    bool hascmd = !xftrim(cmd).empty();
    bool hasdef = !xftrim(def).empty();
    bool runcmd = false, rundef = false, cmdfirst = false;
    switch (order) {
    case KO_ONLY: rundef = hasdef; break;
    case KO_AFTER: runcmd = hascmd; rundef = hasdef; cmdfirst = true; break;
    case KO_IGNORE: runcmd = hascmd; rundef = !hascmd && hasdef; break;
    default: runcmd = hascmd; rundef = hasdef; break; // BEFORE
    }
    // Copies: a command may change the command line or the tables.
    std::string c(cmd), d(def);
    auto run_cmd = [&] {
        cmd_source = source;
        if (!keep)
            xfhist_add(c);
        cmdran = true;
        xfkey_exec(c);
    };
    auto run_def = [&] {
        cmd_source = source;
        defran = true;
        xfkey_exec(d);
    };
    if (runcmd && cmdfirst)
        run_cmd();
    if (rundef)
        run_def();
    if (runcmd && !cmdfirst)
        run_cmd();
    return cmd_rc;
}

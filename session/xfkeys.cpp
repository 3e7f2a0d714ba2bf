// Key tables: the L, F and R classes with their eight shift states, the two
// character tables, ENTER, the field keys, the keyboard family, the PUT, GET
// and DEL bindings, and the look-ups the read cycle makes with what asread
// returned. The default definitions live here, one row a key.
#include "session/xfkeys.h"

#include "commands/commands.h"
#include "fields/fields.h"

#include <cctype>

xfkeyclass key_class[KC_COUNT] = {
    {'L', 10, 16, {}},
    {'F', 12, 25, {}},
    {'R', 15, 16, {}},
};
xfkeydef key_chars[2][256];
xfkeydef key_enter[KEY_STATES];
xfkeyref key_field[FK_COUNT];
int key_backspace = 8;
int key_server = 6;
xfselkey key_sel[SK_COUNT];
int sckey_quit = 1;
int sckey_do = 12;
std::vector<xfkeyref> key_remap_from;
std::vector<xfkeyref> key_remap_to;

const char *const server_names[SERVER_COUNT] = {
    "sun", "sgi", "ibm", "dec", "hp", "hppc", "linux", "i86pc",
    "sco", "siemens", "sequent", "unixware", "alpha", "alphapc",
};
const char *const field_key_names[FK_COUNT] = {
    "HOME", "IHOME", "PREV_FIELD", "INS", "CAPS", "APL", "DOWN_FIELD", "UP_FIELD", "EOF",
};
const char *const order_words[4] = {"ONLY ", "AFTER ", "BEFORE ", "IGNORE "};

namespace {

std::string fold(std::string_view s)
{
    std::string r(s);
    for (char &ch : r)
        ch = char(tolower((unsigned char)ch));
    return r;
}

constexpr int DEFAULT_NBKEYS[KC_COUNT] = {10, 12, 15}; // L, F, R
constexpr int LINUX_SERVER = 6;                        // index of "linux"

// Shift states of the defaults, by name.
enum : int { NONE = 0, S = 1, C = 2, M = 3, SM = 5 };

struct default_row {
    int cls;         // KC_* class
    int key;         // key number
    int state;       // shift state
    const char *def; // definition, order ONLY
};

constexpr default_row defaults[] = {
    {KC_F, 1, NONE, "quit"},
    {KC_F, 2, NONE, "command c_ext"},
    {KC_F, 2, S, "command c_ext"},
    {KC_F, 3, NONE, "command save"},
    {KC_F, 4, NONE, "command c_split"},
    {KC_F, 5, NONE, "command switch"},
    {KC_F, 6, NONE, "command c_endline"},
    {KC_F, 7, NONE, "command backward"},
    {KC_F, 8, NONE, "command forward"},
    {KC_F, 9, NONE, "command ?"},
    {KC_F, 10, NONE, "command home"},
    {KC_F, 10, S, "command home"},
    {KC_F, 11, NONE, "command compress"},
    {KC_F, 12, NONE, "command ="},
    {KC_F, 1, S, "command c_lineadd"},
    {KC_F, 3, S, "command file"},
    {KC_F, 5, S, "command iswitch"},
    {KC_F, 6, S, "command c_endcurl"},
    {KC_F, 7, S, "command pgup"},
    {KC_F, 8, S, "command pgdown"},
    {KC_F, 9, S, "command ?i"},
    {KC_F, 11, S, "command top"},
    {KC_F, 12, S, "command bot"},
    {KC_F, 1, C, "command flquit"},
    {KC_F, 3, C, "command flfile"},
    {KC_F, 7, C, "command left40"},
    {KC_F, 8, C, "command right40"},
    {KC_F, 9, C, "command xshowhistory"},
    {KC_F, 7, M, "command s_lshift"},
    {KC_F, 8, M, "command s_rshift"},
    {KC_F, 9, M, "command showhistory"},
    {KC_R, 5, S, "macro extsel_start"},
    {KC_R, 6, S, "macro extsel_wback"},
    {KC_R, 7, S, "macro extsel_end"},
    {KC_R, 8, S, "macro extsel_up"},
    {KC_R, 9, S, "macro extsel_wfor"},
    {KC_R, 10, S, "macro extsel_left"},
    {KC_R, 12, S, "macro extsel_right"},
    {KC_R, 14, S, "macro extsel_down"},
    {KC_R, 8, C, "macro mvlineup"},
    {KC_R, 10, C, "command prevword"},
    {KC_R, 12, C, "command nextword"},
    {KC_R, 14, C, "macro mvlinedown"},
    {KC_L, 2, NONE, "command match"},
    {KC_L, 4, NONE, "command undo"},
    {KC_L, 6, NONE, "command s_copy"},
    {KC_L, 8, NONE, "command s_paste"},
    {KC_L, 9, NONE, "command s_find"},
    {KC_L, 10, S, "command s_find"},
    {KC_L, 9, C, "command s_find"},
    {KC_L, 10, NONE, "command s_cut"},
    {KC_L, 1, S, "command help"},
    {KC_L, 5, S, "command redo"},
    {KC_L, 3, SM, "s_find"},
};
static_assert(sizeof defaults / sizeof defaults[0] == 54, "fifty-four default definitions");

// The commands that make a key a selection key, by SK_* order.
struct sel_command {
    const char *name; // command name, lower case
    int min;          // its minimum abbreviation
    int cls;          // default class
    int key;          // default key
};
constexpr sel_command sel_commands[SK_COUNT] = {
    {"s_copy", 4, KC_L, 6},
    {"s_paste", 3, KC_L, 8},
    {"s_cut", 4, KC_L, 10},
};

// The shift state of a value: key + state * n, key 1 .. n.
int state_of(int value, int n) { return (value - 1) / n; }
int key_of(int value, int n) { return (value - 1) % n + 1; }

int class_of_code(int code)
{
    switch (code) {
    case 1: case 11: return KC_F;
    case 8: case 18: return KC_L;
    case 9: case 19: return KC_R;
    default: return -1;
    }
}

// The command word of a definition: "command x" and "macro x" name x.
std::string command_word(std::string_view def)
{
    std::string_view rest = def;
    std::string w = fold(xfword(rest));
    if (w == "command" || w == "macro")
        w = fold(xfword(rest));
    return w;
}

// Does the definition run the selection command `which`?
bool runs(const xfkeydef &d, int which)
{
    if (d.def.empty())
        return false;
    const sel_command &s = sel_commands[which];
    return abbrev(command_word(d.def), s.name, s.min);
}

// Does some state of key (cls, key) run the selection command?
bool key_runs(int cls, int key, int which)
{
    const xfkeyclass &k = key_class[cls];
    if (key < 1 || key > k.nbkeys)
        return false;
    for (int st = 0; st < KEY_STATES; st++)
        if (runs(k.slot[xfkey_slot(cls, key, st)], which))
            return true;
    return false;
}

void size_class(xfkeyclass &k, int n)
{
    k.nbkeys = n;
    k.slot.assign(size_t(KEY_STATES * n + 1), xfkeydef{});
}

} // namespace

int xfkey_slot(int cls, int key, int state)
{
    return key + state * key_class[cls].nbkeys;
}

int xfkey_state(int shift, int ctrl, int alt)
{
    static const int by_bits[8] = {0, 1, 2, 4, 3, 5, 6, 7}; // S + 2C + 4M
    return by_bits[(shift ? 1 : 0) | (ctrl ? 2 : 0) | (alt ? 4 : 0)];
}

void xfkeys_reset()
{
    for (int c = 0; c < KC_COUNT; c++) {
        size_class(key_class[c], DEFAULT_NBKEYS[c]);
        as_nbkeys[c] = DEFAULT_NBKEYS[c];
    }
    for (const default_row &r : defaults)
        if (r.key <= key_class[r.cls].nbkeys)
            key_class[r.cls].slot[xfkey_slot(r.cls, r.key, r.state)] = {r.def, KO_ONLY};
    for (auto &table : key_chars)
        for (xfkeydef &d : table)
            d = xfkeydef{};
    for (xfkeydef &d : key_enter)
        d = xfkeydef{};
    for (xfkeyref &r : key_field)
        r = xfkeyref{};
    key_backspace = 8;
    key_server = LINUX_SERVER;
    sckey_quit = 1;
    sckey_do = 12;
    key_remap_from.clear();
    key_remap_to.clear();
    for (int s = 0; s < SK_COUNT; s++)
        key_sel[s] = {sel_commands[s].cls, sel_commands[s].key};
    xfkeys_altmarks();
}

void xfkeys_altmarks()
{
    for (int c = 0; c < 256; c++)
        as_altdef[c] = key_chars[1][c].def.empty() ? 0 : 1;
}

// Moves every definition to the slot its key and state have under the new
// counts; keys beyond a smaller count are dropped.
int xfkeys_nbkeys(int l, int f, int r)
{
    const int want[KC_COUNT] = {l, f, r};
    for (int c = 0; c < KC_COUNT; c++)
        if (want[c] < 1 || want[c] >= key_class[c].maxkeys) {
            xfmsg(120, 1);
            cmd_rc = 1;
            return 1;
        }
    for (int c = 0; c < KC_COUNT; c++) {
        xfkeyclass &k = key_class[c];
        std::vector<xfkeydef> old = std::move(k.slot);
        int oldn = k.nbkeys;
        size_class(k, want[c]);
        for (int st = 0; st < KEY_STATES; st++)
            for (int key = 1; key <= oldn && key <= want[c]; key++)
                k.slot[xfkey_slot(c, key, st)] = std::move(old[size_t(key + st * oldn)]);
        as_nbkeys[c] = want[c];
    }
    xfkeys_rederive();
    return 0;
}

int xfkeys_server(std::string_view name)
{
    std::string w = fold(name);
    for (int i = 0; i < SERVER_COUNT; i++)
        if (w == server_names[i]) {
            key_server = i;
            asfkbtype(i); // the field manager keeps its own table per family
            return 0;
        }
    xfmsg(188, 1);
    cmd_rc = 1;
    return 1;
}

// A key just set to a selection command takes that binding; any other
// binding stays while its key still runs its command, else goes to the
// first key that does, in class order L, F, R.
void xfkeys_rederive(int cls, int key)
{
    for (int s = 0; s < SK_COUNT; s++) {
        xfselkey &b = key_sel[s];
        if (cls >= 0 && key_runs(cls, key, s)) {
            b = {cls, key};
            continue;
        }
        if (b.key > 0 && key_runs(b.cls, b.key, s))
            continue;
        b = {sel_commands[s].cls, -1};
        for (int c = 0; c < KC_COUNT && b.key < 0; c++)
            for (int k = 1; k <= key_class[c].nbkeys && b.key < 0; k++)
                if (key_runs(c, k, s))
                    b = {c, k};
    }
}

const xfkeydef *xfkey_for(int code, int value)
{
    // Ctrl with Escape comes back as code 5.
    if (code == 22 || code == 65 || code == 5)
        return value >= 0 && value < 256 ? &key_chars[code == 65 ? 1 : 0][value] : nullptr;
    int cls = class_of_code(code);
    if (cls < 0 || code > 9)
        return nullptr;
    const xfkeyclass &k = key_class[cls];
    if (value < 1 || value > KEY_STATES * k.nbkeys)
        return nullptr;
    xfkeyref at{cls, key_of(value, k.nbkeys), state_of(value, k.nbkeys)};
    for (size_t i = 0; i < key_remap_from.size(); i++) {
        const xfkeyref &a = key_remap_from[i];
        if (a.cls == at.cls && a.key == at.key && a.state == at.state) {
            at = key_remap_to[i];
            break;
        }
    }
    if (at.key > key_class[at.cls].nbkeys)
        return nullptr; // a remapped key that NBKEYS has since removed
    return &key_class[at.cls].slot[xfkey_slot(at.cls, at.key, at.state)];
}

const xfkeydef *xfkey_enter(int state)
{
    static const xfkeydef plain_enter{"", KO_BEFORE};
    if (state < 0 || state >= KEY_STATES)
        return nullptr;
    if (state == 0 && key_enter[0].def.empty())
        return &plain_enter;
    return &key_enter[state];
}

int xfkey_selection(int code, int value)
{
    int cls = class_of_code(code);
    if (cls < 0 || value < 1)
        return -1;
    int key = key_of(value, key_class[cls].nbkeys);
    for (int s = 0; s < SK_COUNT; s++)
        if (key_sel[s].cls == cls && key_sel[s].key == key)
            return s;
    return -1;
}

bool xfkey_code(const xfkeyref &r, int &code, int &modifiers)
{
    // Key 1 of each class, as the field manager numbers its key codes.
    static const int first_code[KC_COUNT] = {FSK_EXTRA1, FSK_F0 + 1, FSK_PRINT};
    static const int mods[KEY_STATES] = {
        0, FSM_SHIFT, FSM_CTRL, FSM_ALT, FSM_SHIFT | FSM_CTRL,
        FSM_SHIFT | FSM_ALT, FSM_CTRL | FSM_ALT, FSM_SHIFT | FSM_CTRL | FSM_ALT,
    };
    if (r.cls < 0 || r.cls >= KC_COUNT || r.key < 1 || r.state < 0 || r.state >= KEY_STATES)
        return false;
    code = first_code[r.cls] + r.key - 1;
    modifiers = mods[r.state];
    return true;
}

// Key definitions: the tables that give every key, in each of its eight shift
// states, a command text and an order; the SET grammar that fills them; the
// routine that runs a key's definition beside the command line; the keys
// listing. The read cycle includes this header and asks the tables with the
// (code, value) pairs that asread returns.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Orders: how a definition and the command line's text share a key press.
enum : int {
    KO_ONLY = 0,   // the definition only; the command line is dropped
    KO_AFTER = 1,  // the command line first, then the definition
    KO_BEFORE = 2, // the definition first, then the command line
    KO_IGNORE = 3, // the command line when there is one, else the definition
};

// Shift states in slot order: none, S-, C-, M-, S+C-, S+M-, C+M-, S+C+M-.
constexpr int KEY_STATES = 8;

// The three numbered classes, in the order of as_nbkeys.
enum : int { KC_L = 0, KC_F = 1, KC_R = 2, KC_COUNT = 3 };

struct xfkeydef {
    std::string def;     // the definition, empty if none
    int order = KO_BEFORE; // KO_* value
};

// One numbered class: slots indexed key + state * nbkeys, slot 0 unused.
struct xfkeyclass {
    char letter;                 // 'L', 'F' or 'R'
    int nbkeys;                  // keys in the class
    int maxkeys;                 // SET NBKEYS takes values below this
    std::vector<xfkeydef> slot;  // 8 * nbkeys + 1 slots
};

// A key in one state, as the field keys and REMap name it.
struct xfkeyref {
    int cls = -1;   // KC_* class, -1 when unbound
    int key = 0;    // 1 .. nbkeys of the class
    int state = 0;  // shift state 0 .. 7
};

// The field-manager functions a key can be bound to with SET.
enum : int {
    FK_HOME, FK_IHOME, FK_PREV_FIELD, FK_INS, FK_CAPS, FK_APL,
    FK_DOWN_FIELD, FK_UP_FIELD, FK_EOF, FK_COUNT
};

// The selection keys of the read cycle, each a class and a key (any state).
enum : int { SK_PUT, SK_GET, SK_DEL, SK_COUNT };
struct xfselkey {
    int cls;  // KC_* class
    int key;  // 1 .. nbkeys, -1 when no key holds the command
};

extern xfkeyclass key_class[KC_COUNT];      // L, F and R tables
extern xfkeydef key_chars[2][256];          // [0] C- characters, [1] M- characters
extern xfkeydef key_enter[KEY_STATES];      // the eight ENTER definitions
extern xfkeyref key_field[FK_COUNT];        // field keys, cls -1 when unset
extern int key_backspace;                   // 8 (^h) or 127 (^?)
extern int key_server;                      // keyboard family 0 .. 13
extern xfselkey key_sel[SK_COUNT];          // PUT, GET and DEL
extern int sckey_quit;                      // KEY_QUIT of the scrolling pages
extern int sckey_do;                        // KEY_DO of the scrolling pages
extern std::vector<xfkeyref> key_remap_from; // REMap: these keys ...
extern std::vector<xfkeyref> key_remap_to;   // ... act as these

constexpr int SERVER_COUNT = 14;
extern const char *const server_names[SERVER_COUNT]; // "sun" .. "alphapc"
extern const char *const field_key_names[FK_COUNT];  // "HOME" .. "EOF"
extern const char *const order_words[4];             // "ONLY " .. "IGNORE "

// ---------------------------------------------------------------------------
// Tables.
void xfkeys_reset();          // the start-up tables with their defaults
void xfkeys_init();           // xfkeys_reset, and SET reaches the key grammar
// The keyboard file of the terminal named by TERM, looked for under
// keyboard/terminfo/ in installdir and then the current directory: 0 when
// loaded, 1 when none was found or it failed (with a message).
int xfkeys_term();
int xfkey_slot(int cls, int key, int state); // index in key_class[cls].slot
int xfkeys_nbkeys(int l, int f, int r);      // 0, or 1 with message 120
int xfkeys_server(std::string_view name);    // 0, or 1 with message 188
// PUT, GET and DEL from the definitions; a key just set (cls, key) wins.
void xfkeys_rederive(int cls = -1, int key = 0);
void xfkeys_altmarks();       // tell the field manager which Alt keys are taken

// The state of a combination of modifiers (each 0 or 1).
int xfkey_state(int shift, int ctrl, int alt);

// What a key that asread returned stands for: code 1 (F key), 8 (L key),
// 9 (R key) with value key + state * nbkeys, 22 (Ctrl and a character) and
// 65 (Alt and a character); REMap applies. Null when the code is none of
// these or the value is out of range.
const xfkeydef *xfkey_for(int code, int value);
// The ENTER definition of a state. The plain ENTER with no definition comes
// back with order BEFORE whatever its order, so that the command line runs.
const xfkeydef *xfkey_enter(int state);
// The field manager's key code and FSM_* modifier bits of a class key, for
// binding the field keys in its movement table; false when unbound.
bool xfkey_code(const xfkeyref &r, int &code, int &modifiers);
// Which selection key a (code, value) of asread is, pressed (1, 8, 9) or
// released (11, 18, 19), in any shift state: SK_* or -1.
int xfkey_selection(int code, int value);

// ---------------------------------------------------------------------------
// The SET grammar. xfset_key parses "name [order] [definition]" (the text
// after SET) and changes the tables: 0, or 1 after a message, tables kept.
// The three positions, when asked for, tell where the key name ends and
// where the definition starts and ends.
int xfset_key(const char *text, int len, int *keyword_end, int *def_start, int *def_end);
// Parses a key name of the F, L or R classes with its prefix; false if bad.
bool xfkey_parse_ref(std::string_view name, xfkeyref &out);
// The hook SET calls for a word that is not in its table: 0 when the word
// is a key word (accepted, refused with a message, or ignored in batch),
// 1 when it is no key word at all.
int xfsetkey(std::string_view name, std::string_view rest);

// Runs a key press: the command-line text `cmd` (may be blank) and the key's
// definition `def` in the given order, with cmd_source set to `source`. The
// command line's text goes to the history first unless `keep`. cmdran and
// defran tell what ran.
int xfkey_run(std::string_view cmd, std::string_view def, int source, int order,
              bool &cmdran, bool &defran, bool keep);
// Runs one text as a command; tests may replace it.
extern int (*xfkey_exec)(std::string_view text);

// ---------------------------------------------------------------------------
// The listing.
std::vector<std::string> xfkeys_list();          // SET lines, in listing order
int xfkeys_write(const std::string &path);       // 0, or 1 when not written
// Shows the list on its own page and reads keys until F1 or Ctrl+C. Returns
// 1 when the window was resized meanwhile (the caller's pages were rebuilt
// by the field manager), else 0.
int xfshow_keys();

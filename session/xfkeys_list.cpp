// The keys listing: every definition as the SET line that makes it, and the
// file setkeys.vorta that brings the same keys back when called as a macro.
#include "session/xfkeys.h"
#include "session/xflistpage.h"

#include "commands/commands.h"
#include "fields/fields.h"

#include <cstdio>

namespace {

// The start of a class key's line, by shift state: 16 characters wide.
constexpr const char *class_formats[KEY_STATES] = {
    "SET %s%-9d  ",  "SET S-%s%-9d",   "SET C-%s%-9d",   "SET M-%s%-9d",
    "SET S+C-%s%-7d", "SET S+M-%s%-7d", "SET C+M-%s%-7d", "SET S+C+M-%s%-5d",
};
constexpr const char *enter_heads[KEY_STATES] = {
    "SET ENTER       ", "SET S-ENTER     ", "SET C-ENTER     ", "SET M-ENTER     ",
    "SET S+C-ENTER   ", "SET S+M-ENTER   ", "SET C+M-ENTER   ", "SET S+C+M-ENTER ",
};
// The prefix of a key name, by shift state.
constexpr const char *prefixes[KEY_STATES] = {
    "", "S-", "C-", "M-", "S+C-", "S+M-", "C+M-", "S+C+M-",
};
constexpr int HEAD = 16;                // width of the SET part of a line
constexpr int LIST_CLASSES[KC_COUNT] = {KC_F, KC_R, KC_L};
constexpr const char *KEYS_FILE = "setkeys.vorta";
constexpr uint32_t KEYS_PAGE = 0x6b657973; // a page number of its own

std::string padded(std::string s)
{
    if (s.size() < size_t(HEAD))
        s.resize(size_t(HEAD), ' ');
    return s;
}

std::string with_def(std::string head, const xfkeydef &d)
{
    head += order_words[d.order & 3];
    head += d.def;
    return head;
}

std::string char_name(int c)
{
    return c == 27 ? std::string("ESCAPE") : std::string(1, char(c));
}

} // namespace

std::vector<std::string> xfkeys_list()
{
    std::vector<std::string> out;
    char buf[64];
    for (int cls : LIST_CLASSES) {
        const xfkeyclass &k = key_class[cls];
        const char letter[2] = {k.letter, 0};
        for (size_t i = 1; i < k.slot.size(); i++) {
            if (k.slot[i].def.empty())
                continue;
            int key = int(i - 1) % k.nbkeys + 1, state = int(i - 1) / k.nbkeys;
            snprintf(buf, sizeof buf, class_formats[state], letter, key);
            out.push_back(with_def(buf, k.slot[i]));
        }
    }
    static const char *const char_prefix[2] = {"SET C-", "SET M-"};
    for (int t = 0; t < 2; t++)
        for (int c = 0; c < 256; c++)
            if (!key_chars[t][c].def.empty())
                out.push_back(with_def(padded(char_prefix[t] + char_name(c)), key_chars[t][c]));
    for (int s = 0; s < KEY_STATES; s++)
        if (!key_enter[s].def.empty())
            out.push_back(with_def(enter_heads[s], key_enter[s]));
    for (int f = 0; f < FK_COUNT; f++) {
        const xfkeyref &r = key_field[f];
        if (r.cls < 0)
            continue;
        snprintf(buf, sizeof buf, "%s%c%d", prefixes[r.state], key_class[r.cls].letter, r.key);
        out.push_back(padded(std::string("SET ") + field_key_names[f]) + buf);
    }
    out.push_back(padded("SET BACKSPACE") + (key_backspace == 127 ? "^?" : "^h"));
    snprintf(buf, sizeof buf, "SET NBKEYS      %d %d %d", key_class[KC_L].nbkeys,
             key_class[KC_F].nbkeys, key_class[KC_R].nbkeys);
    out.push_back(buf);
    out.push_back(std::string("SET SERVER      ") + server_names[key_server]);
    return out;
}

int xfkeys_write(const std::string &path)
{
    return xflist_write(path, "Key definitions: call this macro to set them again", xfkeys_list());
}

int xfshow_keys()
{
    return xflist_show(xfkeys_list(), KEYS_PAGE, [] { return xfkeys_write(KEYS_FILE); });
}

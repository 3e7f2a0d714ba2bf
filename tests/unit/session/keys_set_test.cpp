// The SET grammar of keys: prefixes in every spelling, key names, order
// words, refusals that leave the tables alone, NBKEYS, SERVER, the field
// keys, the selection keys, REMap and SCKeys.
#include "keys_fixture.h"

#include "fields/fields.h"

namespace {

const char *const BAD = "..... Invalid parameters";

using KeysSet = KeysTest;

TEST_F(KeysSet, DefaultsSitInTheirSlots)
{
    EXPECT_EQ(slot(KC_F, 1, 0).order, KO_ONLY);
    EXPECT_EQ(slot(KC_F, 4, 1).order, KO_BEFORE); // no definition
    // asread's values: key + state * nbkeys, so 13 is Shift with F1.
    ASSERT_NE(xfkey_for(1, 13), nullptr);
    EXPECT_EQ(xfkey_for(1, 13)->def, "command c_lineadd");
    EXPECT_EQ(xfkey_for(8, 4)->def, "command undo");
    EXPECT_EQ(xfkey_for(9, 5 + 15)->def, "macro extsel_start");
    EXPECT_EQ(xfkey_for(1, 0), nullptr);
    EXPECT_EQ(xfkey_for(1, 8 * 12 + 1), nullptr);
    EXPECT_EQ(xfkey_for(11, 1), nullptr); // a release runs nothing
    EXPECT_EQ(key_class[KC_F].slot.size(), 97u);
    EXPECT_EQ(as_nbkeys[KC_L], 10);
    EXPECT_EQ(as_nbkeys[KC_R], 15);
}

TEST_F(KeysSet, EveryPrefixSpellingNamesItsState)
{
    const struct {
        const char *prefix;
        int state;
    } cases[] = {
        {"", 0},        {"s-", 1},      {"c-", 2},      {"m-", 3},      {"l-", 3},
        {"r-", 3},      {"S-", 1},      {"s+c-", 4},    {"c+s-", 4},    {"s+m-", 5},
        {"m+s-", 5},    {"c+m-", 6},    {"m+c-", 6},    {"s+c+m-", 7},  {"s+m+c-", 7},
        {"c+s+m-", 7},  {"c+m+s-", 7},  {"m+s+c-", 7},  {"M+C+S-", 7},
    };
    for (const auto &c : cases) {
        xfkeys_reset();
        std::string def = std::string("msg p") + c.prefix;
        EXPECT_EQ(set(std::string(c.prefix) + "l7 " + def), 0) << c.prefix; // L7 has no defaults
        for (int st = 0; st < KEY_STATES; st++)
            EXPECT_EQ(slot(KC_L, 7, st).def, st == c.state ? def : "") << c.prefix << " state " << st;
        EXPECT_EQ(xfkey_for(8, 7 + c.state * 10)->def, def) << c.prefix;
    }
}

TEST_F(KeysSet, BadNamesAndNumbersLeaveTheTables)
{
    const std::vector<std::string> before = xfkeys_list();
    const char *refused[] = {
        "f13 x", "f0 x", "l11 x", "r16 x", "pf13 x", "s-pf5 x", "s+s-f5 x",
        "s+c+m+s-f5 x", "s+-f5 x", "c+x-f5 x", "s-foo x", "s-a x", "s+m-a x",
        "c+m-escape x", "m-f1x y", "m-f9999 x",
    };
    for (const char *t : refused) {
        EXPECT_EQ(set(t), 1) << t;
        EXPECT_EQ(lastmsg(), BAD) << t;
    }
    // Words that are no key at all are SET's own refusal.
    for (const char *t : {"xyzzy x", "a x", "f x", "f1x y"}) {
        EXPECT_EQ(set(t), 1) << t;
        EXPECT_EQ(lastmsg(), "..... Invalid key-word") << t;
    }
    EXPECT_EQ(xfkeys_list(), before);
}

TEST_F(KeysSet, KeyNamesOfEachKind)
{
    EXPECT_EQ(set("PF5 msg pf"), 0);
    EXPECT_EQ(slot(KC_F, 5, 0).def, "msg pf");
    EXPECT_EQ(set("L10 msg l"), 0);
    EXPECT_EQ(slot(KC_L, 10, 0).def, "msg l");
    EXPECT_EQ(set("R15 msg r"), 0);
    EXPECT_EQ(slot(KC_R, 15, 0).def, "msg r");
    // Named keys are R keys where the field manager numbers them.
    EXPECT_EQ(set("c-leftarrow msg left"), 0);
    EXPECT_EQ(slot(KC_R, 10, 2).def, "msg left");
    EXPECT_EQ(set("S-HOME msg home"), 0);
    EXPECT_EQ(slot(KC_R, 5, 1).def, "msg home");
    EXPECT_EQ(set("pagedown msg pd"), 0);
    EXPECT_EQ(slot(KC_R, 9, 0).def, "msg pd");
    // Characters go to the Ctrl and Alt tables, and Alt ones are marked for
    // the field manager so that the character is not typed.
    EXPECT_EQ(set("m-x msg alt"), 0);
    EXPECT_EQ(key_chars[1]['x'].def, "msg alt");
    EXPECT_EQ(as_altdef['x'], 1);
    EXPECT_EQ(xfkey_for(65, 'x')->def, "msg alt");
    EXPECT_EQ(set("r-X msg big"), 0);
    EXPECT_EQ(key_chars[1]['X'].def, "msg big");
    EXPECT_EQ(set("m-x"), 0);
    EXPECT_EQ(as_altdef['x'], 0);
    EXPECT_EQ(set("c-k msg ctrl"), 0);
    EXPECT_EQ(xfkey_for(22, 'k')->def, "msg ctrl");
    EXPECT_EQ(set("c-escape msg esc"), 0);
    EXPECT_EQ(xfkey_for(5, 27)->def, "msg esc");
    // SET ESCAPE is a setting the editor ignores; the grammar takes it alone.
    std::string t = "escape msg plain";
    EXPECT_EQ(xfset_key(t.c_str(), int(t.size()), nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(xfkey_for(22, 27)->def, "msg plain");
    EXPECT_EQ(set("s+c-enter msg enter"), 0);
    EXPECT_EQ(key_enter[4].def, "msg enter");
    EXPECT_EQ(xfkey_enter(4)->def, "msg enter");
}

TEST_F(KeysSet, OrderWordsAndTheImplicitOnly)
{
    const struct {
        const char *line;
        const char *def;
        int order;
    } cases[] = {
        {"f5 top", "top", KO_BEFORE},
        {"f5 ? ", "?", KO_ONLY},
        {"f5 =", "=", KO_ONLY},
        {"f5 compl x", "compl x", KO_ONLY},
        {"f5 COMPLETE", "COMPLETE", KO_ONLY},
        {"f5 comp x", "comp x", KO_BEFORE},
        {"f5 completed", "completed", KO_BEFORE},
        {"f5 after ?", "?", KO_AFTER},
        {"f5 Ignore  two  words  ", "two  words", KO_IGNORE},
        {"f5 before", "", KO_BEFORE},
        {"f5 ONLY", "", KO_ONLY},
        {"f5", "", KO_BEFORE},
        {"f5 onlyx y", "onlyx y", KO_BEFORE},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(set(c.line), 0) << c.line;
        EXPECT_EQ(slot(KC_F, 5, 0).def, c.def) << c.line;
        EXPECT_EQ(slot(KC_F, 5, 0).order, c.order) << c.line;
    }
}

TEST_F(KeysSet, PositionsOfTheParse)
{
    int kend = -1, dstart = -1, dend = -1;
    std::string t = "  s-F5 after  msg x  ";
    EXPECT_EQ(xfset_key(t.c_str(), int(t.size()), &kend, &dstart, &dend), 0);
    EXPECT_EQ(kend, 6);
    EXPECT_EQ(t.substr(size_t(dstart), size_t(dend - dstart)), "msg x");
    t = "zz top";
    EXPECT_EQ(xfset_key(t.c_str(), int(t.size()), nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(lastmsg(), BAD);
}

TEST_F(KeysSet, NbkeysLimitsAndReslotting)
{
    const std::vector<std::string> before = xfkeys_list();
    for (const char *t : {"nbkeys 10 12 16", "nbkeys 16 12 15", "nbkeys 10 25 15", "nbkeys 0 12 15",
                          "nbkeys -1 12 15"}) {
        EXPECT_EQ(set(t), 1) << t;
        EXPECT_EQ(lastmsg(), "..... Invalid key numbers: must be within 15 24 15") << t;
    }
    for (const char *t : {"nbkeys 10 12", "nbkeys a b c", "nbkeys 10 12 15 1"}) {
        EXPECT_EQ(set(t), 1) << t;
        EXPECT_EQ(lastmsg(), BAD) << t;
    }
    EXPECT_EQ(xfkeys_list(), before);

    EXPECT_EQ(set("nbkeys 15 24 15"), 0);
    EXPECT_EQ(as_nbkeys[KC_F], 24);
    EXPECT_EQ(xfkey_for(1, 2 + 24)->def, "command c_ext");     // S-F2 moved
    EXPECT_EQ(xfkey_for(1, 12 + 24)->def, "command bot");      // S-F12
    EXPECT_EQ(xfkey_for(1, 13 + 24)->def, "");                 // S-F13, new
    EXPECT_EQ(xfkey_for(8, 3 + 5 * 15)->def, "s_find");        // S+M-L3
    EXPECT_EQ(set("f20 msg twenty"), 0);
    EXPECT_EQ(xfkey_for(1, 20)->def, "msg twenty");

    // Shrinking drops the keys beyond the new count, in every state.
    EXPECT_EQ(set("nbkeys 10 6 15"), 0);
    EXPECT_EQ(set("f7 x"), 1);
    EXPECT_EQ(xfkey_for(1, 6 + 6)->def, "command c_endcurl"); // S-F6
    EXPECT_EQ(set("nbkeys 10 12 15"), 0);
    EXPECT_EQ(slot(KC_F, 7, 0).def, "");
    EXPECT_EQ(slot(KC_F, 7, 1).def, "");
    EXPECT_EQ(slot(KC_F, 6, 1).def, "command c_endcurl");
}

TEST_F(KeysSet, ServerBackspaceAndFieldKeys)
{
    EXPECT_EQ(key_server, 6);
    EXPECT_EQ(set("server SUN"), 0);
    EXPECT_EQ(key_server, 0);
    EXPECT_EQ(set("server alphapc"), 0);
    EXPECT_EQ(key_server, 13);
    EXPECT_EQ(set("server pc"), 1);
    EXPECT_EQ(lastmsg(), "..... Invalid server");
    EXPECT_EQ(key_server, 13);

    EXPECT_EQ(set("backspace ^?"), 0);
    EXPECT_EQ(as_bskey, 127);
    EXPECT_EQ(as_delkey, 8);
    EXPECT_EQ(set("backspace ^x"), 1);
    EXPECT_EQ(key_backspace, 127);
    EXPECT_EQ(set("backspace ^H"), 0);
    EXPECT_EQ(as_bskey, 8);
    EXPECT_EQ(as_delkey, 127);

    EXPECT_EQ(set("home s-r5"), 0);
    EXPECT_EQ(key_field[FK_HOME].cls, KC_R);
    EXPECT_EQ(key_field[FK_HOME].key, 5);
    EXPECT_EQ(key_field[FK_HOME].state, 1);
    EXPECT_EQ(set("down_field c+m-f3"), 0);
    EXPECT_EQ(key_field[FK_DOWN_FIELD].state, 6);
    int code = 0, mods = 0;
    ASSERT_TRUE(xfkey_code(key_field[FK_HOME], code, mods));
    EXPECT_EQ(code, FSK_HOME); // Shift with Home
    EXPECT_EQ(mods, FSM_SHIFT);
    ASSERT_TRUE(xfkey_code(key_field[FK_DOWN_FIELD], code, mods));
    EXPECT_EQ(code, FSK_F0 + 3);
    EXPECT_EQ(mods, FSM_CTRL | FSM_ALT);
    EXPECT_EQ(set("eof f99"), 1);
    EXPECT_EQ(set("eof m-x"), 1); // characters are no field keys
    EXPECT_EQ(key_field[FK_EOF].cls, -1);
    EXPECT_EQ(set("home"), 0); // no key unbinds
    EXPECT_EQ(key_field[FK_HOME].cls, -1);
    EXPECT_FALSE(xfkey_code(key_field[FK_HOME], code, mods));
}

TEST_F(KeysSet, SelectionKeysFollowTheirCommands)
{
    EXPECT_EQ(key_sel[SK_PUT].cls, KC_L);
    EXPECT_EQ(key_sel[SK_PUT].key, 6);
    EXPECT_EQ(key_sel[SK_GET].key, 8);
    EXPECT_EQ(key_sel[SK_DEL].key, 10);
    // Any shift state, pressed or released.
    EXPECT_EQ(xfkey_selection(8, 6 + 2 * 10), SK_PUT);
    EXPECT_EQ(xfkey_selection(18, 10), SK_DEL);
    EXPECT_EQ(xfkey_selection(1, 6), -1);

    EXPECT_EQ(set("f5 s_copy"), 0);
    EXPECT_EQ(key_sel[SK_PUT].cls, KC_F);
    EXPECT_EQ(key_sel[SK_PUT].key, 5);
    EXPECT_EQ(xfkey_selection(1, 5 + 12), SK_PUT);
    EXPECT_EQ(set("f5 top"), 0); // the old key still copies
    EXPECT_EQ(key_sel[SK_PUT].cls, KC_L);
    EXPECT_EQ(key_sel[SK_PUT].key, 6);
    EXPECT_EQ(set("l6"), 0);
    EXPECT_EQ(key_sel[SK_PUT].key, -1);
    EXPECT_EQ(xfkey_selection(8, 6), -1);
    EXPECT_EQ(set("c-r3 command S_CUT keep"), 0);
    EXPECT_EQ(key_sel[SK_DEL].cls, KC_R);
    EXPECT_EQ(key_sel[SK_DEL].key, 3);
    EXPECT_EQ(set("s-f9 macro s_paste"), 0);
    EXPECT_EQ(key_sel[SK_GET].cls, KC_F);
    EXPECT_EQ(key_sel[SK_GET].key, 9);
}

TEST_F(KeysSet, BatchAcceptsAndIgnores)
{
    batch = true;
    const std::vector<std::string> before = xfkeys_list();
    EXPECT_EQ(set("f5 top"), 0);
    EXPECT_EQ(set("f99 top"), 0);
    EXPECT_EQ(set("nbkeys 1 1 1"), 0);
    EXPECT_TRUE(msgs().empty());
    EXPECT_EQ(xfkeys_list(), before);
    EXPECT_EQ(set("xyzzy"), 1); // no key word: still SET's refusal
}

TEST_F(KeysSet, RemapMakesOneKeyActAsAnother)
{
    cmd_rc = 0;
    xfcmdline("remap 2 f1 s-r5 f3 l2");
    EXPECT_EQ(cmd_rc, 0);
    EXPECT_EQ(xfkey_for(1, 1)->def, "command save");
    EXPECT_EQ(xfkey_for(9, 5 + 15)->def, "command match");
    EXPECT_EQ(xfkey_for(1, 3)->def, "command save"); // F3 itself is untouched
    xfcmdline("remap");
    EXPECT_EQ(lastmsg(), "REMAP 2 F1 S-R5 F3 L2");
    for (const char *t : {"remap 1 f1", "remap 1 f1 f2 f3", "remap 1 f1 zz", "remap x f1 f2",
                          "remap 1 m-a f2"}) {
        cmd_rc = 0;
        xfcmdline(t);
        EXPECT_EQ(cmd_rc, 1) << t;
        EXPECT_EQ(lastmsg(), BAD) << t;
    }
    EXPECT_EQ(key_remap_from.size(), 2u); // refusals kept the map
    xfcmdline("remap 1 f1 f12");
    xfcmdline("set nbkeys 10 11 15");
    EXPECT_EQ(xfkey_for(1, 1), nullptr); // its target is gone
    xfcmdline("remap 0");
    EXPECT_EQ(xfkey_for(1, 1)->def, "quit");
}

TEST_F(KeysSet, ScrollingPageKeys)
{
    xfcmdline("sckeys");
    EXPECT_EQ(lastmsg(), "..... KEY_QUIT = F1   KEY_DO = F12 ");
    xfcmdline("set sckeys f3 5");
    EXPECT_EQ(sckey_quit, 3);
    EXPECT_EQ(sckey_do, 5);
    xfcmdline("query sckeys");
    EXPECT_EQ(lastmsg(), "..... KEY_QUIT = F3   KEY_DO = F5 ");
    for (const char *t : {"sckeys 13 1", "sckeys 0 1", "sckeys 1", "sckeys g1 2", "sckeys 1 2 3"}) {
        cmd_rc = 0;
        xfcmdline(t);
        EXPECT_EQ(cmd_rc, 1) << t;
        EXPECT_EQ(lastmsg(), BAD) << t;
    }
    EXPECT_EQ(sckey_quit, 3);
}

TEST_F(KeysSet, KeyboardFileOperands)
{
    cmd_rc = 0;
    xfcmdline("keyboard x.esc 3");
    EXPECT_EQ(lastmsg(), "..... Invalid keyboard type");
    EXPECT_EQ(cmd_rc, 1);
    cmd_rc = 0;
    xfcmdline("keyboard /nonexistent/k.esc 1");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_NE(lastmsg().find("/nonexistent/k.esc"), std::string::npos);
}

} // namespace

// Loading: record endings, blank stripping, binary detection, the refusals,
// files found again, read-only detection, reload and the last-files list.
#include <gtest/gtest.h>
#include "tempdir.h"

#include "commands/commands.h"
#include "session/xed.h"

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string slurp(const std::string &p)
{
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void spit(const std::string &p, const std::string &data)
{
    std::ofstream(p, std::ios::binary) << data;
}

std::string line(int i) { return std::string(xf->lines[i].text, (size_t)xf->lines[i].len); }

class Load : public TempDirTest {
protected:
    void SetUp() override
    {
        TempDirTest::SetUp();
        if (HasFatalFailure())
            return;
        autobin = 1;
        autobin_allowed = std::string("\x09\x0a\x0c\x0d\x1a", 5);
        load_limit = 0;
        fileconv_read = 2;
        eol_default = eol_empty = 1;
        keepblanks_global = bin_global = -1;
        topline = -1;
        lastfiles_on = 1;
        lastfiles_max = 30;
        backup_on = 1;
        bak_suffix = reload_suffix = "%";
        noreload_once = 0;
        xfisoconv_set(0);
        cdpath.assign(1, dir + "/");
    }
    // Loads `data` as `name`; the file is then current.
    void load(const std::string &data, const std::string &name = "f.txt")
    {
        spit(dir + "/" + name, data);
        ASSERT_EQ(xfedit(name), 0);
        ASSERT_NE(xf, nullptr);
    }
    std::vector<std::string> all()
    {
        std::vector<std::string> v;
        for (int i = 0; i < nbli(); i++)
            v.push_back(line(i));
        return v;
    }
    using V = std::vector<std::string>;
};

TEST_F(Load, RecordEndingsDecideTheFileKind)
{
    load("one\r\ntwo\r\n");
    EXPECT_EQ(all(), (V{"one", "two"}));
    EXPECT_EQ(xf->eol_kind, 0);
    load("one\ntwo\n", "u.txt");
    EXPECT_EQ(xf->eol_kind, 1);
    load("one\ntwo\r\nthree\n", "m.txt");
    EXPECT_EQ(all(), (V{"one", "two", "three"}));
    EXPECT_EQ(xf->eol_kind, 0) << "any CR makes it a windows file";
    load("a\r\r\r\nb\n", "cr.txt");
    EXPECT_EQ(line(0), "a") << "all trailing CRs go";
}

TEST_F(Load, FileConvUnixKeepsCarriageReturns)
{
    fileconv_read = 1;
    load("one\r\n");
    EXPECT_EQ(line(0), "one\r");
    EXPECT_EQ(xf->eol_kind, 1);
}

TEST_F(Load, IsoConvTranslatesBothWays)
{
    xfcmdline("isoconv on");
    ASSERT_EQ(isoconv, 1);
    load("caf\x82 \x9c\n\xc4\n");
    EXPECT_EQ(line(0), "caf\xe9 \xa3") << "e acute and the pound sign in ISO";
    EXPECT_EQ(line(1), "\x8f") << "a box-drawing character takes a control slot";
    xfcmdline("save");
    EXPECT_EQ(slurp(dir + "/f.txt"), "caf\x82 \x9c\n\xc4\n");
    std::string every;
    for (int b = 0; b < 256; b++)
        every += (char)b;
    load(every, "all.dat");
    xfcmdline("save");
    EXPECT_EQ(slurp(dir + "/all.dat"), every) << "the two tables are each other's inverse";
    xfcmdline("isoconv off");
    load("\x82\n", "off.txt");
    EXPECT_EQ(line(0), "\x82");
}

TEST_F(Load, SettingsCommandsReportAndCheck)
{
    struct {
        const char *cmd;   // command given
        const char *said;  // the message it leaves
    } rows[] = {
        {"autobin", "..... Is ON"},
        {"fileconv", "..... Is unix auto unix"},
        {"fileconv windows unix", ""},
        {"fileconv", "..... Is windows unix unix"},
        {"fileconv dos", "..... Invalid parameters"},
        {"limit 5", ""},
        {"limit", "..... Is 5"},
        {"limit -1", "..... Invalid parameters"},
        {"backup off .bak", ""},
        {"backup", "..... Is OFF .bak .bak"},
        {"autobin on 9 10 13", "..... Invalid parameters"},
        {"lastfiles on 0", "..... Invalid parameters"},
        {"saveclearundo", "..... Is OFF"},
    };
    for (auto &r : rows) {
        last_message.clear();
        xfcmdline(r.cmd);
        EXPECT_EQ(last_message, r.said) << r.cmd;
    }
    EXPECT_EQ(eol_default, 0);
    EXPECT_EQ(fileconv_read, 1);
    EXPECT_EQ(load_limit, 5);
    EXPECT_EQ(bak_suffix, ".bak");
    xfcmdline("autobin on 9 10 12 13 26 27");
    EXPECT_EQ(autobin_allowed.size(), 6u);
    load("esc\x1b\n");
    EXPECT_EQ(xf->bin, 0) << "byte 27 is allowed now";
    xfcmdline("binary on");
    EXPECT_EQ(xf->bin, 1);
    EXPECT_EQ(xf->keepblanks, 1) << "BIN keeps blanks";
    xfcmdline("rw off");
    xfcmdline("rw");
    EXPECT_EQ(last_message, "..... Is OFF");
}

TEST_F(Load, EmptyFilesAndTheLastRecord)
{
    load("", "empty.txt");
    EXPECT_EQ(nbli(), 0);
    EXPECT_EQ(xf->eol_kind, eol_empty);
    load("\n", "lf.txt");
    EXPECT_EQ(all(), (V{""}));
    load("a\nno end", "noend.txt");
    EXPECT_EQ(all(), (V{"a", "no end"}));
    load("\x1a", "eof.txt");
    EXPECT_EQ(all(), (V{""}));
    EXPECT_EQ(xf->eol_kind, 0) << "a lone byte 26 is an empty windows file";
}

TEST_F(Load, NoTopLineGivesAnEmptyFileOneLine)
{
    topline = 0;
    load("", "empty.txt");
    EXPECT_EQ(nbli(), 1);
}

TEST_F(Load, TrailingBlanksStripUnlessKept)
{
    load("a   \n   \n\nb  ");
    EXPECT_EQ(all(), (V{"a", " ", "", "b "}))
        << "a record keeps one character, the unended last one two";
    keepblanks_global = 1;
    load("a   \n   \n", "k.txt");
    EXPECT_EQ(all(), (V{"a   ", "   "}));
}

TEST_F(Load, ControlBytesMakeAFileBinary)
{
    std::string data("ab\0cd \nxy \n", 11);
    load(data, "b.dat");
    EXPECT_EQ(xf->bin, 1);
    EXPECT_EQ(xf->keepblanks, 1);
    EXPECT_EQ(xf->eol_kind, 1);
    ASSERT_EQ(nbli(), 3) << "an empty last line keeps the final line feed";
    EXPECT_EQ(line(0), std::string("ab\0cd ", 6));
    EXPECT_EQ(xf->lines[0].len, 6);
    EXPECT_EQ(line(2), "");
    EXPECT_EQ(last_message, "..... Binary mode (Found x'00') set for file " + dir + "/b.dat");

    load("x\x01y\n", "one.dat");
    EXPECT_EQ(xf->bin, 1);
    load("tab\there\x0c\r\n", "text.dat");
    EXPECT_EQ(xf->bin, 0) << "tab, form feed and CR are allowed";
    autobin = 0;
    load(data, "off.dat");
    EXPECT_EQ(xf->bin, 0);
    EXPECT_EQ(nbli(), 2);
}

TEST_F(Load, ControlByteBeyondTheFirstKilobyteIsText)
{
    std::string data(1024, 'a');
    data += "\x01\n";
    load(data);
    EXPECT_EQ(xf->bin, 0);
}

TEST_F(Load, RefusalsLeaveTheRingAsItWas)
{
    load("keep\n", "keep.txt");
    int before = nbfiles();
    mkdir((dir + "/sub").c_str(), 0755);
    EXPECT_EQ(xfedit("sub"), 1);
    EXPECT_EQ(last_message, "..... Not an editable file");
    EXPECT_EQ(xfedit("bad?name"), 1);
    EXPECT_EQ(last_message, "..... File \"" + dir + "/bad?name\": not a valid file name");
    EXPECT_EQ(xfedit(std::string(1199, 'x')), 1);
    EXPECT_EQ(last_message, "..... File name too long");
    spit(dir + "/big.txt", std::string(100, 'x'));
    load_limit = 99;
    EXPECT_EQ(xfedit("big.txt"), 1);
    EXPECT_EQ(last_message, "..... File too big; use the LIMIT command");
    load_limit = 100;
    EXPECT_EQ(xfedit("big.txt"), 0);
    EXPECT_EQ(nbfiles(), before + 1);
    EXPECT_EQ(xf->fname, dir + "/big.txt");
}

TEST_F(Load, MissingFileIsANewEmptyFile)
{
    ASSERT_EQ(xfedit("new.txt"), 0);
    EXPECT_EQ(nbli(), 0);
    EXPECT_EQ(xf->mtime, 2147483647);
    EXPECT_EQ(xf->fname, dir + "/new.txt");
    EXPECT_EQ(xf->chgcount, 0);
}

TEST_F(Load, OpenFilesAreFoundAgainThroughLinks)
{
    load("x\n", "real.txt");
    ASSERT_EQ(symlink("real.txt", (dir + "/link.txt").c_str()), 0);
    int k = xfidx;
    load("", "other.txt");
    ASSERT_EQ(xfedit(dir + "/link.txt"), 0);
    EXPECT_EQ(nbfiles(), 2);
    EXPECT_EQ(xfidx, k);
    ASSERT_EQ(xfedit("./real.txt"), 0);
    EXPECT_EQ(nbfiles(), 2);
}

TEST_F(Load, CAndCppAreTriedForEachOther)
{
    spit(dir + "/prog.cpp", "int main;\n");
    ASSERT_EQ(xfedit("prog.c"), 0);
    EXPECT_EQ(xf->fname, dir + "/prog.cpp");
    EXPECT_EQ(xfedit("none.c", dir, false), 0);
    EXPECT_EQ(xf->fname, dir + "/none.c") << "neither exists: a new file of the given name";
}

TEST_F(Load, RelativeNamesAreLookedForThroughTheCdPath)
{
    mkdir((dir + "/away").c_str(), 0755);
    spit(dir + "/away/far.txt", "far\n");
    cdpath.assign({dir + "/nowhere/", dir + "/away/"});
    mkdir((dir + "/here").c_str(), 0755);
    ASSERT_EQ(xfedit("far.txt", dir + "/here", false), 0);
    EXPECT_EQ(xf->fname, dir + "/away/far.txt");
    ASSERT_EQ(xfedit("near.txt", dir + "/here", false), 0);
    EXPECT_EQ(xf->fname, dir + "/here/near.txt") << "a new file goes in the directory";
}

TEST_F(Load, ReadOnlyFromTheModeBits)
{
    spit(dir + "/ro.txt", "r\n");
    chmod((dir + "/ro.txt").c_str(), 0444);
    ASSERT_EQ(xfedit("ro.txt"), 0);
    EXPECT_EQ(xf->rw, 0);
    EXPECT_EQ(last_message, "..... File \"" + dir + "/ro.txt\" is read-only - RW OFF");
    cmd_rc = 0;
    xfcmdline("save");
    EXPECT_EQ(cmd_rc, 1);
    EXPECT_EQ(last_message, "..... Read only file; use the \"RW ON\" command before");
}

TEST_F(Load, ReloadOnlyAnUnchangedFile)
{
    load("old\n", "r.txt");
    int k = xfidx;
    load("other\n", "o.txt");
    spit(dir + "/r.txt", "new\nlines\n");
    files[(size_t)k]->mtime -= 10;
    EXPECT_TRUE(xfreload_all());
    xfsetfile(k);
    EXPECT_EQ(xf->fname, dir + "/r.txt");
    EXPECT_EQ(all(), (V{"new", "lines"}));
    EXPECT_EQ(slurp(dir + "/r.txt%"), "old\n") << "the previous text is kept aside";

    xf_do('r', std::string_view("mine"), 0, "test");
    spit(dir + "/r.txt", "newer\n");
    xf->mtime -= 10;
    EXPECT_FALSE(xfreload_all());
    EXPECT_EQ(line(0), "mine") << "a changed text is never replaced";
}

TEST_F(Load, LastFilesNewestFirstEachOnce)
{
    load("", "a.txt");
    load("", "bb.txt");
    load("", "a.txt");
    xfedit("a.txt"); // already open: no load, no entry
    std::string list = slurp(dir + "/vorta.lastfiles");
    std::istringstream in(list);
    std::string l1, l2, l3;
    std::getline(in, l1);
    std::getline(in, l2);
    EXPECT_FALSE(std::getline(in, l3));
    EXPECT_EQ(l1.rfind("\"" + dir + "/bb.txt\" ", 0), 0u) << l1;
    EXPECT_EQ(l2.rfind("\"" + dir + "/a.txt\"  ", 0), 0u) << "padded to the longest name: " << l2;
}

TEST_F(Load, GetBringsARangeAsOneChange)
{
    spit(dir + "/src.txt", "1\n2\n3\n4\n");
    load("a\nb\n");
    curline() = 0;
    xfcmdline("get src.txt 2 2");
    EXPECT_EQ(all(), (V{"a", "2", "3", "b"}));
    EXPECT_EQ(curline(), 2);
    xfcmdline("get src.txt 9");
    EXPECT_EQ(last_message, "..... File " + dir + "/src.txt has only 4 records");
    xfcmdline("get nothing.txt");
    EXPECT_EQ(last_message, "..... File not found");
    xf->group_open = 1;
    xfcmdline("undo");
    EXPECT_EQ(all(), (V{"a", "b"}));
}

} // namespace

// The encoding of a file comes from its own bytes; the locale decides only
// where they cannot (nothing past ASCII); ENCODING overrides both.
class Encoding : public Load {
protected:
    void TearDown() override
    {
        utf8_global = -1;
        setlocale(LC_CTYPE, "C");
        Load::TearDown();
    }
};

TEST_F(Encoding, DecidedByTheBytesThenTheLocale)
{
    using namespace std::literals;
    struct {
        std::string_view data; // the file
        int c_locale;          // its encoding under the C locale
        int utf8_locale;       // under a UTF-8 locale
    } rows[] = {
        {"caf\xc3\xa9\n"sv, 1, 1},
        {"\xe6\x97\xa5\xe6\x9c\xac\n\xf0\x9f\x98\x80\n"sv, 1, 1},
        {"caf\xe9\n"sv, 0, 0},                  // Latin-1
        {"ok \xc3\xa9\nbad \xc0\xaf\n"sv, 0, 0}, // one overlong form spoils it
        {"\xed\xa0\x80\n"sv, 0, 0},             // an encoded surrogate
        {"plain\n"sv, 0, 1},
        {""sv, 0, 1},
        {"x\xc3\xa9\0y\n"sv, 0, 0},             // binary: a NUL byte
    };
    for (const char *loc : {"C", "C.UTF-8"}) {
        if (!setlocale(LC_CTYPE, loc))
            GTEST_SKIP() << loc << " is not available";
        int k = 0;
        for (auto &r : rows) {
            load(std::string(r.data), "f" + std::to_string(k++) + loc + ".txt");
            EXPECT_EQ(xf->utf8, loc[1] ? r.utf8_locale : r.c_locale) << loc << " row " << k;
        }
    }
}

TEST_F(Encoding, TheCommandSetsAndReports)
{
    load("caf\xe9\n");
    xfcmdline("query encoding");
    EXPECT_EQ(last_message, "..... Is BYTES");
    xfcmdline("encoding utf8");
    EXPECT_EQ(xf->utf8, 1);
    load("more\xe9\n", "g.txt");
    EXPECT_EQ(xf->utf8, 1) << "files loaded later follow it";
    xfcmdline("enc auto");
    EXPECT_EQ(xf->utf8, 0) << "AUTO decides from the bytes again";
    xfcmdline("encoding latin1");
    EXPECT_EQ(last_message, "..... Invalid parameters");
    xfcmdline("encoding bytes extra");
    EXPECT_EQ(last_message, "..... Invalid parameters");
    EXPECT_EQ(utf8_global, -1) << "a refused command changes nothing";
}

TEST_F(Encoding, LimitsCutWholeCharacters)
{
    load("\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e!\n");
    ASSERT_EQ(xf->utf8, 1);
    xf->lrecl = 2;
    xf_do('r', std::string_view("\xc3\xa9\xc3\xa9\xc3\xa9"), 0, "test");
    EXPECT_EQ(line(0), "\xc3\xa9\xc3\xa9") << "two columns, four bytes";
    // On saving, TRUNC cuts and LRECL pads by columns too.
    xf->lrecl = 0;
    xf_do('r', std::string_view("\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e!"), 0, "test");
    xf->trunc = 2;
    ASSERT_EQ(xfwrite(false, false), 0);
    EXPECT_EQ(slurp(dir + "/f.txt"), "\xe6\x97\xa5\xe6\x9c\xac\n");
    xf->trunc = 0;
    xf->lrecl = 6;
    ASSERT_EQ(xfwrite(false, false), 0);
    EXPECT_EQ(slurp(dir + "/f.txt"), "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e!  \n");
}

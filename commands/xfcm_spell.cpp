// Spelling: SPELL checks a word (by default the one under the cursor, or the
// words of the current line) and offers corrections, SPELL_Next finds the
// next misspelt word of the file, SPELL_Add takes a word into the user's own
// dictionary. The checking is Hunspell's, with the system's dictionary of the
// user's language (English when there is none of it); the user's words live
// in the data folder, one a line, in the file `words`.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "commands/xfsettings.h"
#include "platform/platform.h"
#include "session/xed.h"

#include <hunspell.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

Hunhandle *speller = nullptr; // made on first use, kept for the session
bool tried = false;           // a failure to make it is not retried

// Where the system keeps dictionaries, and the language to take.
constexpr const char *dict_dirs[] = {"/usr/share/hunspell/", "/usr/share/myspell/dicts/", "/usr/share/myspell/"};

std::string language()
{
    for (const char *v : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char *s = std::getenv(v);
        if (s && *s && std::strcmp(s, "C") != 0 && std::strcmp(s, "POSIX") != 0) {
            std::string l(s);
            size_t cut = l.find_first_of(".@");
            return cut == std::string::npos ? l : l.substr(0, cut);
        }
    }
    return "";
}

bool exists(const std::string &p)
{
    struct stat st;
    return stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::string user_words() { return xfuser_data() + "words"; }

Hunhandle *get_speller()
{
    if (speller || tried)
        return speller;
    tried = true;
    std::string lang = language();
    for (const std::string &l : {lang, std::string("en_US"), std::string("en_GB")}) {
        if (l.empty())
            continue;
        for (const char *d : dict_dirs) {
            std::string base = std::string(d) + l;
            if (exists(base + ".aff") && exists(base + ".dic")) {
                speller = Hunspell_create((base + ".aff").c_str(), (base + ".dic").c_str());
                break;
            }
        }
        if (speller)
            break;
    }
    if (!speller)
        return nullptr;
    std::ifstream in(user_words());
    std::string w;
    while (std::getline(in, w))
        if (!w.empty())
            Hunspell_add(speller, w.c_str());
    return speller;
}

int no_dictionary()
{
    xfmsgs("..... No spelling dictionary installed (Debian package hunspell-en-us)", 1);
    cmd_rc = 1;
    return 1;
}

// A word for the speller: letters (any past ASCII too) with apostrophes
// inside. Names of programs (with digits or underscores) are not words.
bool letter(unsigned char c) { return std::isalpha(c) || c >= 128; }

struct word_at {
    int32_t from, to; // byte range in the line
};

// In a file of bytes a letter past ASCII is not UTF-8, which the
// dictionary's words are: such words are passed over rather than misread.
std::vector<word_at> words_of(const char *t, int32_t n, bool utf8)
{
    std::vector<word_at> out;
    int32_t i = 0;
    while (i < n) {
        if (!xfwordchar((unsigned char)t[i])) {
            i++;
            continue;
        }
        int32_t a = i;
        bool plain = true;
        while (i < n && (xfwordchar((unsigned char)t[i]) || (t[i] == '\'' && i + 1 < n && letter(t[i + 1])))) {
            if ((!letter(t[i]) && t[i] != '\'') || (!utf8 && (unsigned char)t[i] >= 128))
                plain = false;
            i++;
        }
        if (plain)
            out.push_back({a, i});
    }
    return out;
}

bool correct(Hunhandle *h, const std::string &w) { return Hunspell_spell(h, w.c_str()) != 0; }

// A word of a file of bytes, read as Latin-1, in the dictionary's UTF-8.
std::string latin1_utf8(const std::string &w)
{
    std::string o;
    for (unsigned char c : w) {
        if (c < 128) {
            o += (char)c;
        } else {
            o += (char)(0xC0 | (c >> 6));
            o += (char)(0x80 | (c & 0x3F));
        }
    }
    return o;
}

// "..... Misspelt: teh; try: the, tea, ten" with at most six corrections.
void offer(Hunhandle *h, const std::string &w)
{
    char **list = nullptr;
    int n = Hunspell_suggest(h, &list, w.c_str());
    std::string m = "..... Misspelt: " + w;
    for (int i = 0; i < n && i < 6; i++)
        m += (i == 0 ? "; try: " : ", ") + std::string(list[i]);
    if (n <= 0)
        m += "; no correction found";
    if (list)
        Hunspell_free_list(h, &list, n);
    xfmsgs(m, 1);
    cmd_rc = 1;
}

std::string text_of(int32_t li, const word_at &w)
{
    return std::string(xf->lines[li].text + w.from, (size_t)(w.to - w.from));
}

// The cursor goes to the word, and the column pointer with it, so that the
// next SPELL_Next goes on behind it also where there is no page.
void put_cursor(int32_t li, int32_t off)
{
    const xfline &l = xf->lines[li];
    int32_t col = xfcol_at(l.text, l.len, off, xf->utf8);
    xfcursor_file(li, col);
    xv->perfile[(size_t)xfidx].colptr = col + 1;
}

// The first misspelt word of line li from byte `from`: true with it offered.
bool check_line(Hunhandle *h, int32_t li, int32_t from)
{
    const xfline &l = xf->lines[li];
    for (const word_at &w : words_of(l.text, l.len, xf->utf8)) {
        if (w.from < from)
            continue;
        std::string s = text_of(li, w);
        if (!correct(h, s)) {
            curline() = li;
            put_cursor(li, w.from);
            offer(h, s);
            return true;
        }
    }
    return false;
}

int spelling_ok()
{
    xfmsg(131, 0);
    cmd_rc = 0;
    return 1;
}

} // namespace

int xfcm_spell(const xfcmd &c)
{
    xftrace("Commande xfcm_spell");
    Hunhandle *h = get_speller();
    if (!h)
        return no_dictionary();
    xfmsg(130, 2);
    std::string_view rest = c.ops();
    std::string_view w = xfword(rest);
    if (!w.empty()) {
        if (!correct(h, std::string(w)))
            offer(h, std::string(w));
        else
            spelling_ok();
        return 1;
    }
    if (!xf)
        return spelling_ok();
    int32_t li, a, b;
    if (xfcursor_word(li, a, b)) {
        std::string s(xf->lines[li].text + a, (size_t)(b - a));
        if (!xf->utf8)
            s = latin1_utf8(s);
        if (!correct(h, s))
            offer(h, s);
        else
            spelling_ok();
        return 1;
    }
    li = curline();
    if (li >= 0 && li < nbli() && check_line(h, li, 0))
        return 1;
    return spelling_ok();
}

int xfcm_spell_next(const xfcmd &c)
{
    xftrace("Commande xfcm_spell_next");
    if (!xftrim(c.ops()).empty())
        return xfbad();
    Hunhandle *h = get_speller();
    if (!h)
        return no_dictionary();
    if (!xf)
        return spelling_ok();
    xfmsg(130, 2);
    // From behind the word under the cursor, or from the line after the
    // current one.
    int32_t li, a, b;
    int32_t from = 0;
    if (xfcursor_word(li, a, b)) {
        from = b;
    } else {
        li = curline() + 1;
    }
    for (int32_t i = std::max(li, 0); i < nbli(); i++, from = 0)
        if (check_line(h, i, from))
            return 1;
    return spelling_ok();
}

int xfcm_spell_add(const xfcmd &c)
{
    xftrace("Commande xfcm_spell_add");
    std::string_view rest = c.ops();
    std::string w(xfword(rest));
    if (!xftrim(rest).empty())
        return xfbad();
    if (w.empty() && xf) {
        int32_t li, a, b;
        if (xfcursor_word(li, a, b)) {
            w.assign(xf->lines[li].text + a, (size_t)(b - a));
            if (!xf->utf8)
                w = latin1_utf8(w);
        }
    }
    if (w.empty()) {
        xfmsg(159, 1);
        cmd_rc = 5;
        return 1;
    }
    Hunhandle *h = get_speller();
    if (!h)
        return no_dictionary();
    // The user's list is made new (never through a link) or appended to.
    std::string path = user_words();
    std::string folder = xfuser_data();
    for (size_t s = folder.find('/', 1); s != std::string::npos; s = folder.find('/', s + 1))
        mkdir(folder.substr(0, s).c_str(), 0700);
    int fd = pl_create_new(path, 0600);
    if (fd == -EEXIST)
        fd = open(path.c_str(), O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC);
    std::string line = w + "\n";
    if (fd < 0 || pl_write_all(fd, line.data(), line.size()) != 0) {
        if (fd >= 0)
            close(fd);
        xfmsgs("..... Unable to write " + path, 1);
        cmd_rc = 1;
        return 1;
    }
    close(fd);
    Hunspell_add(h, w.c_str());
    xfmsgs("..... Added to your dictionary: " + w, 0);
    cmd_rc = 0;
    return 1;
}

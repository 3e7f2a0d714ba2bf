// The dispatcher: the LINEND splitter, $ expansion, and the search order that
// turns one command line into an action (synonyms, macros, comments, line
// numbers, targets, the special forms, the command table, the settings that
// are ignored, and last the operating system).
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

int cmd_rc = 0;
int may_macro = 1;
int may_builtin = 1;
int may_system = 1;
int macro_first = 0;
int profile_pending = 0;
int synonym_armed = 1;
int synonym_on = 1;
int no_redisplay = 0;
int keep_rc_quiet = 0;
int inner_quiet = 0;
int linend_on = 1;
char linend_char = 12;
int impcmscp = 2;
int redisplay_done = 0;
int macro_depth = 0;
int debug_cmds = 0;
xfmodes modes;

std::string_view xfcmd::ops() const
{
    size_t i = (size_t)typed;
    if (i > norm.size())
        return {};
    std::string_view r = norm.substr(i);
    while (!r.empty() && (r.front() == ' ' || r.front() == '\t'))
        r.remove_prefix(1);
    return r;
}

std::string xffold(std::string_view s)
{
    std::string r(s);
    for (auto &c : r)
        if ((unsigned char)c < 128)
            c = (char)std::tolower((unsigned char)c);
    return r;
}

namespace {

bool word_is(std::string_view w, const char *lower, const char *upper, size_t min)
{
    size_t n = std::strlen(lower);
    if (w.size() < min || w.size() > n)
        return false;
    return std::string_view(lower).substr(0, w.size()) == w ||
           std::string_view(upper).substr(0, w.size()) == w;
}

// Commands whose free text must keep the LINEND character.
bool splittable(std::string_view s)
{
    if (!linend_on || s.empty() || s[0] == '*' || s[0] == '#')
        return false;
    size_t e = s.find_first_of(" \t");
    std::string_view w = s.substr(0, e);
    return !(word_is(w, "set", "SET", 2) || word_is(w, "button", "BUTTON", 2) ||
             word_is(w, "delay", "DELAY", 5));
}

std::string_view skip_blanks(std::string_view s)
{
    while (!s.empty() && s.front() == ' ')
        s.remove_prefix(1);
    return s;
}

// The end of a dispatch: reset the one-shot switches, and give a failed line
// back to the command line.
void dispatch_end(std::string_view line)
{
    may_macro = 1;
    may_builtin = 1;
    may_system = 1;
    inner_quiet = keep_rc_quiet;
    int quiet = keep_rc_quiet;
    keep_rc_quiet = 0;
    if (no_redisplay) {
        no_redisplay = 0;
        return;
    }
    if (cmd_rc != 0 && modes.redisplay && !quiet && xv) {
        xv->cmdline.assign(line);
        xv->cmdcursor = (int)line.size();
        redisplay_done = 1;
    }
}

bool run_synonyms(std::string_view line, int ctx1, int ctx2, int mm, int mb)
{
    std::vector<std::string> cmds;
    if (!(mm && mb && synonym_armed && synonym_on) || !synonym_expand(line, cmds))
        return false;
    synonym_armed = 0;
    for (size_t i = 0; i + 1 < cmds.size(); i++) {
        xfcom2(cmds[i], ctx1, ctx2);
        if (cmd_rc != 0) {
            synonym_armed = 1;
            return true;
        }
    }
    xfcom2(cmds.back(), ctx1, ctx2);
    keep_rc_quiet = inner_quiet;
    synonym_armed = 1;
    return true;
}

// "$$end$$mac$$end$$mac$$N": the marker that ends a command-file level run
// from the queue.
bool end_marker(std::string_view line)
{
    static constexpr std::string_view mark = "$$end$$mac$$end$$mac$$";
    if (line.substr(0, mark.size()) != mark)
        return false;
    long n;
    if (!xfnumber(line.substr(mark.size()), n))
        return false;
    xfmacro_stack_remove((size_t)n);
    if (!arg_frames.empty())
        arg_frames.pop_back();
    return true;
}

bool notimp_match(std::string_view line)
{
    if (!modes.notimp)
        return false;
    for (int i = 0; i < NOTIMP_COUNT; i++)
        if (word_match(line, notimp_infos[i]))
            return true;
    return false;
}

// Steps 7a to 7h: everything that only built-in commands may take.
bool builtin_forms(xfcmd &c, std::string_view orig, std::string_view wordl)
{
    if (!c.lline.empty() && c.lline[0] == '#')
        return true;
    if (!modes.number_scroll && !c.line.empty() && std::isdigit((unsigned char)c.line[0])) {
        xfline_number(c.line, c.ctx1, c.ctx2);
        return true;
    }
    std::string_view tline = c.line;
    if (arbchar_on && arbchar == '$')
        tline = orig;
    if (xftarget_test(tline)) {
        xflocate_line(tline, c.ctx1, c.ctx2);
        return true;
    }
    for (int i = 0; i < 5; i++) {
        c.ent = &cmd_table[i];
        if (cmd_table[i].fn(c))
            return true;
    }
    if (const cmd_entry *e = cmd_lookup(wordl)) {
        c.ent = e;
        if (e->fn(c))
            return true;
    }
    if (end_marker(c.line))
        return true;
    if (debug_cmds && xfsyscmd_word(c.line))
        return true;
    return notimp_match(c.line);
}

} // namespace

namespace {

// The command word of an expanded line: from the second character, letters
// and '_'; the two one-character commands end it at once.
size_t word_end(std::string_view line)
{
    auto one_char = [](unsigned char ch) { return ch == 189 || ch == 238; };
    if (line.empty())
        return 0;
    size_t w = 1;
    if (one_char((unsigned char)line[0]))
        return w;
    while (w < line.size()) {
        unsigned char ch = (unsigned char)line[w];
        if (one_char(ch))
            return w + 1;
        if (!(std::isalpha(ch) && ch < 128) && ch != '_')
            break;
        w++;
    }
    return w;
}

std::string normalise(const std::string &line, size_t w)
{
    std::string norm = line;
    if (w < line.size() && line[w] != ' ')
        norm.insert(w, 1, ' ');
    return norm;
}

// The texts one command is seen through; the handler's views point here.
struct cmd_texts {
    std::string orig, line, lline; // see xfcmd
    size_t w;                      // end of the command word
    std::string norm, lnorm;       // see xfcmd

    cmd_texts(std::string o, std::string l)
        : orig(std::move(o)), line(std::move(l)), lline(xffold(line)), w(word_end(line)),
          norm(normalise(line, w)), lnorm(xffold(norm))
    {
    }
    xfcmd cmd(int ctx1, int ctx2) const
    {
        xfcmd c;
        c.orig = orig;
        c.line = line;
        c.lline = lline;
        c.norm = norm;
        c.lnorm = lnorm;
        c.ctx1 = ctx1;
        c.ctx2 = ctx2;
        c.typed = (int)w;
        return c;
    }
};

} // namespace

int xfcmdline(std::string_view line, int ctx1, int ctx2)
{
    if (line.empty())
        return 0;
    // Every command of the line, whoever issued it (the user, a key, a
    // macro, a command file), is an undo step of its own: UNDo takes back
    // one of them, and a change after an UNDo forfeits the redo list.
    auto one = [&](std::string_view cmd) {
        xfopen_groups();
        return xfcom2(cmd, ctx1, ctx2);
    };
    std::string_view s = skip_blanks(line);
    if (!splittable(s))
        return one(s);
    for (;;) {
        s = skip_blanks(s);
        if (!splittable(s))
            break;
        size_t p = s.find(linend_char);
        if (p == std::string_view::npos)
            break;
        one(s.substr(0, p));
        s.remove_prefix(p + 1);
    }
    int r = one(s);
    if (r != 0)
        xfqueue_clear();
    return r;
}

int xfcmdline_given(std::string_view line, int ctx1, int ctx2)
{
    if (line.find('\n') != std::string_view::npos) {
        xfmsg(70, 1);
        cmd_rc = 1;
        return 1;
    }
    std::string copy(line);
    for (auto &ch : copy)
        if (ch == 0)
            ch = '\n';
    return xfcmdline(copy, ctx1, ctx2);
}

int xfcom2(std::string_view text, int ctx1, int ctx2)
{
    std::string orig(text);
    if (debug_cmds)
        std::fprintf(stderr, "xfcom2: com = %s\n", orig.c_str());
    cmd_texts t(orig, xfexpand(orig));
    xfcmd c = t.cmd(ctx1, ctx2);
    const std::string &line = t.line, &norm = t.norm;
    size_t w = t.w;

    // This dispatch's switches; a nested dispatch starts with all of them set.
    int mm = may_macro, mb = may_builtin, ms = may_system;
    may_macro = may_builtin = may_system = 1;
    cmd_rc = 0;
    bool done = run_synonyms(line, ctx1, ctx2, mm, mb);
    if (!done && (macro_first || profile_pending)) {
        profile_pending = 0;
        if (mm)
            done = xfmacro_search(mb ? std::string_view(norm) : std::string_view(line));
        else
            mm = 1;
    }
    if (!done && mb)
        done = builtin_forms(c, orig, std::string_view(t.lnorm).substr(0, w));
    if (!done && !macro_first && mm)
        done = xfmacro_search(norm);
    if (!done) {
        if (impcmscp == 0 || !mb || !ms) {
            std::string m = "..... Invalid command \"" + line + "\"";
            xfmsgs(m, 1);
            cmd_rc = -1;
        } else {
            // The operating system's command; its own failure is its message.
            xfimpcmscp_run(line, ctx1, ctx2);
        }
    }
    dispatch_end(line);
    return cmd_rc;
}

int xfcall(const cmd_entry *e, xfcm_fn fn, std::string_view text, int ctx1, int ctx2)
{
    cmd_texts t{std::string(text), std::string(text)};
    xfcmd c = t.cmd(ctx1, ctx2);
    c.ent = e;
    return fn(c);
}

// ---------------------------------------------------------------------------
// $ expansion.

xfname_parts xfsplit_name(const std::string &name)
{
    xfname_parts p;
    size_t d = name.rfind('/');
    size_t from = d == std::string::npos ? 0 : d;
    size_t e = name.rfind('.');
    if (e == std::string::npos || e < from)
        e = name.size();
    p.lfn = name.substr(0, e);
    p.fn = d == std::string::npos ? name.substr(0, e) : name.substr(d + 1, e - d - 1);
    p.fd = d == std::string::npos ? name.substr(0, 1) : name.substr(0, std::max<size_t>(d, 1));
    p.ft = e < name.size() ? name.substr(e + 1) : std::string();
    return p;
}

std::string xfexpand(std::string_view line)
{
    if (!modes.expand_on || line.find('$') == std::string_view::npos)
        return std::string(line);
    // Fixed words first, in an order where no word is a prefix of a later one.
    std::vector<std::pair<std::string, std::string>> words;
    words.push_back({"$xhome", xhome});
    words.push_back({"$arch", "lnx"});
    if (xf) {
        xfname_parts p = xfsplit_name(xf->fname);
        words.push_back({"$name", xf->fname});
        words.push_back({"$lfn", p.lfn});
        words.push_back({"$fn", p.fn});
        words.push_back({"$fd", p.fd});
        words.push_back({"$ft", p.ft});
    }
    bool in_macro = !arg_frames.empty();
    if (in_macro) {
        const auto &f = arg_frames.back();
        words.push_back({"$argv", f.empty() ? std::string() : f.back()});
    }

    std::string out;
    size_t i = 0;
    while (i < line.size()) {
        char ch = line[i];
        // "\$word" keeps the word; "\\$word" keeps one backslash and expands.
        if (ch == '\\' && i + 1 < line.size() && line[i + 1] == '$') {
            size_t j = i + 1, k = j + 1;
            while (k < line.size() && line[k] != ' ' && line[k] != '$')
                k++;
            out.append(line.substr(j, k - j));
            i = k;
            continue;
        }
        if (ch == '\\' && i + 2 < line.size() && line[i + 1] == '\\' && line[i + 2] == '$') {
            out.push_back('\\');
            i += 2;
            continue;
        }
        if (ch != '$') {
            out.push_back(ch);
            i++;
            continue;
        }
        std::string_view rest = line.substr(i);
        bool hit = false;
        for (auto &[k, v] : words)
            if (rest.substr(0, k.size()) == k) {
                out += v;
                i += k.size();
                hit = true;
                break;
            }
        if (hit)
            continue;
        if (in_macro && i + 1 < line.size() && std::isdigit((unsigned char)line[i + 1])) {
            size_t k = i + 1;
            while (k < line.size() && std::isdigit((unsigned char)line[k]))
                k++;
            size_t n = (size_t)std::atol(std::string(line.substr(i + 1, k - i - 1)).c_str());
            const auto &f = arg_frames.back();
            // The last element of a frame is the $argv text, not a word.
            if (f.size() > 1 && n < f.size() - 1)
                out += f[n];
            i = k;
            continue;
        }
        if (modes.expand_env) {
            size_t k = i + 1;
            while (k < line.size() && line[k] != ' ')
                k++;
            std::string var(line.substr(i + 1, k - i - 1));
            if (!var.empty()) {
                if (const char *v = std::getenv(var.c_str()))
                    out += v;
                i = k;
                continue;
            }
        }
        out.push_back(ch);
        i++;
    }
    return out;
}

// ---------------------------------------------------------------------------
// Small operand helpers shared by the handlers.

std::string_view xftrim(std::string_view s)
{
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t'))
        s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

std::string_view xfword(std::string_view &rest)
{
    rest = skip_blanks(rest);
    while (!rest.empty() && rest.front() == '\t')
        rest.remove_prefix(1);
    size_t e = rest.find_first_of(" \t");
    std::string_view w = rest.substr(0, e);
    rest.remove_prefix(e == std::string_view::npos ? rest.size() : e);
    return w;
}

bool xfcount(const xfcmd &c, long &n)
{
    std::string_view op = xftrim(c.ops());
    n = 1;
    if (!op.empty() && (!xfnumber(op, n) || n < 1)) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return false;
    }
    return true;
}

bool xfcount_lines(const xfcmd &c, long &n)
{
    if (!xfcount(c, n))
        return false;
    if (n > xfmax_lines - (long)xf->nbli()) {
        xfmsg(16, 1);
        cmd_rc = 5;
        return false;
    }
    return true;
}

bool xfnumber(std::string_view s, long &out)
{
    s = xftrim(s);
    if (s.empty() || s.size() > 10)
        return false;
    long v = 0;
    for (char ch : s) {
        if (!std::isdigit((unsigned char)ch))
            return false;
        v = v * 10 + (ch - '0');
    }
    out = v;
    return true;
}

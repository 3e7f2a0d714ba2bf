// Targets: the scanner that finds where a target ends in a command line,
// the splitting of compound string targets, the parser that turns a target
// into a line (or -2 not found, -3 invalid), the string search of LOCATE and
// the line ranges that commands take. Nothing else parses a target.
#include "commands/commands.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cstring>

namespace {

bool is_digit(char ch) { return ch >= '0' && ch <= '9'; }
bool is_alnum(char ch)
{
    return is_digit(ch) || (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z');
}

size_t digits(std::string_view s, size_t i)
{
    while (i < s.size() && is_digit(s[i]) && (unsigned char)s[i] < 128)
        i++;
    return i;
}

// A string target runs to its last delimiter, or to the line's end when the
// last delimiter opens it or stands behind a connector.
size_t scan_string(std::string_view s, size_t i)
{
    while (i < s.size() && s[i] == ' ')
        i++;
    if (i < s.size() && s[i] == '~')
        i++;
    if (i >= s.size())
        return s.size();
    char d = s[i];
    size_t last = s.rfind(d);
    if (last == i)
        return s.size();
    auto behind = [&](size_t k, std::string_view what) {
        return k >= what.size() && s.substr(k - what.size(), what.size()) == what;
    };
    if (behind(last, "|") || behind(last, "&") || behind(last, "\x8f") || behind(last, "|~") ||
        behind(last, "&~") || behind(last, "\x8f~"))
        return s.size();
    return last + 1;
}

int32_t last_line() { return nbli() - 1; }

// Moves n lines (in scope, unless SCOPE ALL) from `from`; false when it ran
// past an end, with `to` at the limit: the end of the file forward, the
// top backward.
bool count_lines(int32_t from, long n, int dir, int32_t &to)
{
    if (xv->scope == 1) {
        int64_t t = (int64_t)from + (int64_t)dir * n;
        to = (int32_t)std::clamp<int64_t>(t, topline, nbli());
        return t >= topline && t <= last_line();
    }
    int32_t cur = from;
    while (n > 0) {
        int32_t next = cur + dir;
        if (next < topline || next > last_line()) {
            to = dir > 0 ? nbli() : topline;
            return false;
        }
        cur = next;
        if (xfinscope(cur))
            n--;
    }
    to = cur;
    return true;
}

// One part of a compound string target.
struct part {
    std::string text; // as written, for messages
    std::string str;  // the string to look for
    bool neg = false; // ~: a line without it
    bool regex = false; // r/.../ (ALL only)
    bool blank = false; // the word blank (ALL only): an empty or blank line
    bool word = false;  // \string\ (ALL only): whole words
    xfpat pat;        // prepared
};

struct compound {
    std::vector<part> parts;
    std::string conns; // connectors between parts: '&' or '|'
    std::string all_text() const
    {
        std::string s;
        for (size_t i = 0; i < parts.size(); i++) {
            if (i) {
                s += ' ';
                s += conns[i - 1];
                s += ' ';
            }
            s += parts[i].text;
        }
        return s;
    }
};

bool is_conn(char ch) { return ch == '&' || ch == '|' || ch == '\x8f'; }

// ALL's word for lines of blanks, from its first letter.
bool blank_word(std::string_view w)
{
    if (w.empty() || w.size() > 5)
        return false;
    for (size_t i = 0; i < w.size(); i++)
        if ((w[i] | 32) != "blank"[i])
            return false;
    return true;
}

// The alphanumeric word that starts at k.
std::string_view word_at(std::string_view s, size_t k)
{
    size_t e = k;
    while (e < s.size() && is_alnum(s[e]))
        e++;
    return s.substr(k, e - k);
}

// Whether an ALL part that is not a delimited string starts at k: a blank
// word or a regular expression, either negated.
bool all_part_at(std::string_view s, size_t k)
{
    if (k < s.size() && s[k] == '~')
        k++;
    if (k + 1 < s.size() && (s[k] | 32) == 'r' && (s[k + 1] == '/' || s[k + 1] == '\\'))
        return true;
    std::string_view w = word_at(s, k);
    return blank_word(w) && (k + w.size() >= s.size() || !is_alnum(s[k + w.size()]));
}

// Splits a compound: parts and connectors alternate. False for an even
// number of elements (message 163 is the caller's).
bool split(std::string_view body, compound &c, bool all)
{
    size_t i = 0;
    auto skip_blanks = [&] {
        while (i < body.size() && body[i] == ' ')
            i++;
    };
    skip_blanks();
    size_t lead = i;
    char d = 0;
    {
        size_t k = i;
        if (k < body.size() && body[k] == '~')
            k++;
        if (k < body.size())
            d = body[k];
    }
    std::vector<std::string> elems;
    std::string cur;
    auto next_is_part = [&](size_t k) {
        while (k < body.size() && body[k] == ' ')
            k++;
        if (k >= body.size())
            return false;
        char ch = body[k];
        if (ch == d)
            return true;
        if (ch == '~')
            return k + 1 < body.size() && (body[k + 1] == d || body[k + 1] == '\\' ||
                                           !is_alnum(body[k + 1]));
        if (all && (all_part_at(body, k) || ch == '\\'))
            return true; // ALL's forms, whole-word strings among them
        unsigned char u = (unsigned char)ch;
        return (u < 92 || u > 126) && !is_alnum(ch);
    };
    auto prev_is_delim = [&](size_t k) {
        while (k > lead && body[k - 1] == ' ')
            k--;
        if (k <= lead)
            return false;
        if (k - 1 == lead || (k - 2 == lead && body[lead] == '~'))
            return false; // the opening delimiter itself
        char ch = body[k - 1];
        if (ch == d)
            return true;
        if (all) {
            size_t b = k;
            while (b > lead && is_alnum(body[b - 1]))
                b--;
            if (b < k && blank_word(body.substr(b, k - b)))
                return true;
        }
        return !is_alnum(ch) && ch != ' ';
    };
    for (; i < body.size(); i++) {
        char ch = body[i];
        if (ch == '\\' && i + 1 < body.size() && is_conn(body[i + 1])) {
            cur.push_back(body[++i]);
            continue;
        }
        if (is_conn(ch) && prev_is_delim(i) && (next_is_part(i + 1) || i + 1 >= body.size() ||
                                                body.find_first_not_of(' ', i + 1) == std::string_view::npos)) {
            elems.push_back(cur);
            elems.push_back(std::string(1, ch == '\x8f' ? '|' : ch));
            cur.clear();
            i++;
            skip_blanks();
            lead = i;
            // Each part may have its own delimiter.
            size_t k = i;
            if (k < body.size() && body[k] == '~')
                k++;
            if (k < body.size())
                d = body[k];
            i--;
            continue;
        }
        cur.push_back(ch);
    }
    if (!cur.empty() || elems.empty())
        elems.push_back(cur);
    if (elems.size() % 2 == 0)
        return false;
    for (size_t k = 0; k < elems.size(); k += 2) {
        part p;
        std::string e = elems[k];
        size_t a = e.find_first_not_of(' ');
        e = a == std::string::npos ? std::string() : e.substr(a, e.find_last_not_of(' ') - a + 1);
        p.text = e;
        size_t j = 0;
        if (j < e.size() && e[j] == '~') {
            p.neg = true;
            j++;
        }
        std::string rest = e.substr(j);
        if (all && blank_word(rest) && !rest.empty()) {
            p.blank = true;
        } else {
            if (all && rest.size() >= 2 && (rest[0] == 'r' || rest[0] == 'R') && (rest[1] == '/' || rest[1] == '\\')) {
                p.regex = true;
                rest = rest.substr(1);
            }
            if (rest.empty())
                return false;
            char dl = rest[0];
            p.word = all && dl == '\\' && !p.regex;
            std::string_view s = std::string_view(rest).substr(1);
            size_t close = s.rfind(dl);
            if (close != std::string_view::npos)
                s = s.substr(0, close);
            p.str.assign(s);
        }
        c.parts.push_back(std::move(p));
        if (k + 1 < elems.size())
            c.conns.push_back(elems[k + 1][0]);
    }
    return true;
}

bool part_holds(const part &p, int32_t li, int32_t from)
{
    const xfline &l = xf->lines[li];
    if (p.blank) {
        for (int32_t k = 0; k < l.len; k++)
            if (l.text[k] != ' ')
                return false;
        return true;
    }
    int32_t zl, zr, ms, me;
    xfzone_bytes(li, zl, zr);
    return xfpat_find(p.pat, l.text, l.len, zl, zr, std::max(from, zl), ms, me);
}

// The compound's verdict on a line: left to right, no precedence.
bool compound_holds(const compound &c, int32_t li, int32_t from)
{
    if (xv->scope != 1 && !xfinscope(li))
        return false;
    bool r = part_holds(c.parts[0], li, from) != c.parts[0].neg;
    for (size_t k = 0; k < c.conns.size(); k++) {
        if (r && c.conns[k] == '|')
            return true;
        if (!r && c.conns[k] == '&')
            return false;
        const part &p = c.parts[k + 1];
        r = part_holds(p, li, from) != p.neg;
    }
    return r;
}

// Where a search starts: the cursor's line just behind it when it stands on
// the current line and LOCATE is NOSTAY, else the line after (before) the
// current one. Commands that take a target always start on the next line.
void search_start(int dir, bool from_cursor, int32_t &li, int32_t &from)
{
    int32_t cur = curline();
    li = cur + dir;
    from = dir > 0 ? 0 : 2147483647;
    if (!from_cursor || modes.locate_stay)
        return;
    xfcursor c = xfcursor_now();
    if (c.fld != 0 || c.li != cur)
        return;
    if (cur < 0) {
        li = 0;
        from = 0;
        return;
    }
    const xfline &l = xf->lines[cur];
    li = cur;
    from = xfcol_off(l.text, l.len, dir > 0 ? c.col + 1 : c.col, xf->utf8);
}

void note_match(int32_t li, int32_t ms, int32_t me, bool cursor)
{
    const xfline &l = xf->lines[li];
    int32_t col = xfcol_at(l.text, l.len, ms, xf->utf8);
    int32_t end = xfcol_at(l.text, l.len, me, xf->utf8);
    lastmatch = {xf->fileid, li, col, std::max(0, end - col)};
    if (cursor)
        xfcursor_file(li, col);
}

int compound_target(std::string_view body, int dir, bool move, bool for_command)
{
    compound c;
    if (!split(body, c, false)) {
        xfmsg(163, 1);
        cmd_rc = 5;
        return -3;
    }
    bool icase = xfcase_ignore();
    for (auto &p : c.parts) {
        std::string s = p.str;
        if (hex_on && s.size() >= 4 && (s[0] == 'x' || s[0] == 'X') && s[1] == '\'') {
            if (!xfhex_decode(s, s)) {
                xfmsg(150, 1);
                cmd_rc = 1;
                return -3;
            }
        }
        if (s.empty()) {
            if (memo_str.empty()) {
                xfmsg(167, 1);
                cmd_rc = 1;
                return -3;
            }
            s = memo_str;
        }
        if (!xfpat_init(p.pat, s, icase, false, p.regex))
            return -3;
    }
    int32_t li, from;
    search_start(dir, move && !for_command, li, from);
    int32_t cur = curline();
    int32_t n = nbli();
    for (int32_t k = li; k >= 0 && k < n; k += dir, from = dir > 0 ? 0 : 2147483647)
        if (compound_holds(c, k, dir > 0 ? from : 0))
            return k;
    if (wrap_on) {
        for (int32_t k = dir > 0 ? 0 : n - 1; k >= 0 && k < n && (dir > 0 ? k <= cur : k >= cur); k += dir)
            if (compound_holds(c, k, 0)) {
                if (!for_command)
                    xfmsg(23, 0);
                return k;
            }
    }
    xfmsgs("..... Target \"" + c.all_text() + "\" not found.", 1);
    return -2;
}

bool single_positive(std::string_view body)
{
    compound c;
    return !body.empty() && body[0] != '~' && split(body, c, false) && c.parts.size() == 1;
}

} // namespace

int xfsearch_string(std::string_view text, int dir, bool regex, bool in_target, bool move,
                    bool for_command)
{
    if (text.empty())
        return -3;
    char d = text[0];
    std::string str(text.substr(1));
    if (!regex) {
        size_t e = str.find_last_not_of(' ');
        str.resize(e == std::string::npos ? 0 : e + 1);
        if (!str.empty() && str.back() == d)
            str.pop_back();
    } else if (!str.empty() && str.back() == d) {
        str.pop_back();
    }
    std::string shown = str;
    if (!regex) {
        if (str.empty()) {
            if (memo_str.empty()) {
                xfmsg(167, 1);
                cmd_rc = 1;
                return -3;
            }
            str = memo_str;
            shown = str;
        } else {
            memo_str = str;
        }
        if (hex_on && str.size() >= 4 && (str[0] == 'x' || str[0] == 'X') && str[1] == '\'') {
            if (!xfhex_decode(str, str)) {
                xfmsg(150, 1);
                cmd_rc = 1;
                return -3;
            }
        }
    }
    xfpat p;
    if (!xfpat_init(p, str, xfcase_ignore(), d == '\\' && !regex, regex)) {
        cmd_rc = 1;
        return -3;
    }
    int32_t li, from;
    search_start(dir, !for_command, li, from);
    int32_t ms = 0, me = 0;
    bool wrapped = false;
    int32_t found = xfsearch_lines(p, li, from, dir, wrap_on != 0, curline(), ms, me, wrapped);
    if (found < 0) {
        xfmsgs(std::string(regex ? "..... Regular expression \"" : "..... String \"") + shown +
                   "\" not found.",
               1);
        return in_target ? -2 : -2;
    }
    if (wrapped && !for_command)
        xfmsg(23, 0);
    note_match(found, ms, me, move && !modes.locate_stay);
    if (move)
        curline() = found;
    return found;
}

size_t xftarget_scan(std::string_view s)
{
    if (s.empty())
        return 0;
    char ch = s[0];
    if (is_digit(ch))
        return digits(s, 0);
    if (ch == ':') {
        size_t i = 1;
        while (i < s.size() && s[i] == ' ')
            i++;
        if (i < s.size() && !is_digit(s[i]))
            return scan_string(s, i);
        return digits(s, i);
    }
    if (ch == '+' || ch == '-') {
        size_t i = 1;
        while (i < s.size() && s[i] == ' ')
            i++;
        if (i >= s.size())
            return i;
        if (is_digit(s[i]))
            return digits(s, i);
        if (s[i] == '*')
            return i + 1;
        return scan_string(s, i);
    }
    if (ch == '*')
        return 1;
    if (ch == '.') {
        size_t i = 1;
        while (i < s.size() && !std::strchr(" *+~-/:.", s[i]))
            i++;
        return i;
    }
    return scan_string(s, 0);
}

int xftarget_parse(std::string_view t, bool move) { return xftarget_parse(t, move, false); }

int xftarget_parse(std::string_view t, bool move, bool for_command)
{
    t = xftrim(t);
    int32_t cur = curline();
    int32_t result;
    if (t.empty()) {
        xfmsg(163, 1);
        cmd_rc = 5;
        return -3;
    }
    if (t[0] == '.') {
        std::string low = xffold(t);
        if (low == ".zcsr") {
            xfcursor c = xfcursor_now();
            result = c.fld == 0 && c.li >= topline && c.li < nbli() ? c.li : cur;
        } else if (low == ".zfirst" || low == ".zf") {
            result = nbli() ? 0 : topline;
        } else if (low == ".zlast" || low == ".zl") {
            result = std::max(topline, last_line());
        } else {
            int k = xfpoint_find(t);
            if (k < 0) {
                xfmsg(165, 1);
                cmd_rc = 1;
                return -2;
            }
            result = xf->points[(size_t)k].li;
        }
    } else if (t[0] == ':') {
        std::string_view num = xftrim(t.substr(1));
        long n;
        if (num.empty() || digits(num, 0) != num.size()) {
            xfmsg(54, 1);
            cmd_rc = 1;
            return -3;
        }
        if (num.size() > 9 || !xfnumber(num, n)) {
            cmd_rc = 1;
            return -3;
        }
        bool zero = xv->perfile[(size_t)xfidx].number == 2;
        result = (int32_t)std::clamp<long>(zero ? n : n - 1, topline, nbli());
    } else if (t == "*" || t == "+*") {
        result = nbli();
    } else if (t == "-*") {
        result = topline;
    } else {
        int dir = 1;
        std::string_view body = t;
        if (body[0] == '+' || body[0] == '-') {
            dir = body[0] == '-' ? -1 : 1;
            body = xftrim(body.substr(1));
        }
        if (!body.empty() && is_digit(body[0])) {
            long n;
            if (body.size() > 9 || digits(body, 0) != body.size() || !xfnumber(body, n)) {
                cmd_rc = 1;
                return -3;
            }
            bool inside = count_lines(cur, n, dir, result);
            if (!inside && move) {
                curline() = std::clamp(result, topline, std::max(topline, last_line()));
                cmd_rc = 1;
                keep_rc_quiet = 1;
                return result;
            }
            if (!inside)
                return result;
        } else if (body.empty()) {
            result = cur; // a sign alone: no move
        } else if (single_positive(body)) {
            return xfsearch_string(body, dir, false, true, move, for_command);
        } else {
            result = compound_target(body, dir, move, for_command);
            if (result < 0)
                return result;
            if (move && !modes.locate_stay)
                xfcursor_file(result, 0);
        }
    }
    if (result >= 0 && result < nbli() && !xfinscope(result) && xv->scope == 0) {
        xfmsg(55, 1);
        cmd_rc = 1;
        return -3;
    }
    if (move)
        curline() = std::clamp(result, topline, std::max(topline, last_line()));
    return result;
}

int xftarget_lines(std::string_view &ops, bool back, int32_t &first, int64_t &n)
{
    ops = xftrim(ops);
    int32_t cur = curline();
    size_t len = xftarget_scan(ops);
    std::string_view t = ops.substr(0, len);
    ops = xftrim(ops.substr(len));
    int r = xftarget_parse(t, false, true);
    if (r < -1)
        return r;
    if (r < cur) {
        if (!back) {
            xfmsg(168, 1);
            return -3;
        }
        first = r + 1;
        n = cur - r;
        return 0;
    }
    first = cur;
    n = (int64_t)r - cur;
    return 0;
}

bool xfselexpr_parse(std::string_view body, xfselexpr &e)
{
    compound c;
    if (!split(body, c, true)) {
        xfmsg(163, 1);
        cmd_rc = 5;
        return false;
    }
    e.parts.clear();
    for (auto &p : c.parts) {
        size_t d = (p.neg ? 1 : 0) + (p.regex ? 1 : 0);
        if (!p.blank && (d >= p.text.size() || is_alnum(p.text[d]))) {
            xfmsg(16, 1);
            cmd_rc = 5;
            return false;
        }
        std::string str = p.str;
        if (!p.blank && !p.regex && hex_on && str.size() >= 4 && (str[0] | 32) == 'x' && str[1] == '\'' &&
            !xfhex_decode(str, str)) {
            xfmsg(150, 1);
            cmd_rc = 1;
            return false;
        }
        if (!p.blank && str.empty()) {
            xfmsg(108, 1);
            cmd_rc = 5;
            return false;
        }
        e.parts.push_back({std::move(str), p.neg, p.blank, p.regex, p.word});
    }
    e.conns = c.conns;
    return true;
}

bool xftarget_test(std::string_view line)
{
    if (line.empty() || (unsigned char)line[0] >= 128)
        return false;
    if (line.substr(0, 2) == "-\\")
        return false;
    if (std::strchr("0123456789+-:*/", line[0]))
        return true;
    return line.size() >= 2 && (line[0] == '.' || line.substr(0, 2) == "~/");
}

void xflocate_line(std::string_view line, int ctx1, int ctx2)
{
    if (!xf)
        return;
    lastlorc.assign(line);
    size_t n = xftarget_scan(line);
    int wasrc = cmd_rc;
    (void)wasrc;
    int r = xftarget_parse(line.substr(0, n), true, false);
    if (r == -3) {
        cmd_rc = 5;
        return;
    }
    if (r == -2) {
        if (wrap_on) {
            cmd_rc = 2;
        } else {
            cmd_rc = 1;
            if (!stay_on) {
                bool back = !line.empty() && line[0] == '-';
                curline() = back ? topline : std::max(topline, last_line());
            }
        }
        return;
    }
    std::string_view rest = xftrim(line.substr(n));
    if (!rest.empty() && (cmd_rc == 0 || keep_rc_quiet)) {
        int quiet = keep_rc_quiet;
        xfcom2(rest, ctx1, ctx2);
        keep_rc_quiet = quiet && cmd_rc == 0 ? 0 : keep_rc_quiet;
    }
}

void xfline_number(std::string_view line, int ctx1, int ctx2)
{
    if (!xf)
        return;
    size_t e = digits(line, 0);
    long n = 0;
    if (e > 10 || !xfnumber(line.substr(0, e), n)) {
        xfmsg(54, 1);
        cmd_rc = 1;
        return;
    }
    int32_t li = (int32_t)std::clamp<long>(n - 1, topline, std::max(topline, last_line()));
    if (xv->scope == 0 && !xfinscope(li)) {
        xfmsg(55, 1);
        cmd_rc = 1;
        return;
    }
    curline() = li;
    std::string_view rest = xftrim(line.substr(e));
    if (!rest.empty())
        xfcom2(rest, ctx1, ctx2);
}

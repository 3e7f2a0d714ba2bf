// Moving the current line: the line-number form, a line that is a target
// (LOCATE), the target scanner and parser for line numbers, relative moves,
// labels and single strings, and TOP, Bottom, Up, Down/Next, FORward and
// BAckward.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

bool is_digit(char ch) { return ch >= '0' && ch <= '9'; }

size_t digits(std::string_view s, size_t i)
{
    while (i < s.size() && is_digit(s[i]))
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
    if (behind(last, "|") || behind(last, "&") || behind(last, "|~") || behind(last, "&~"))
        return s.size();
    return last + 1;
}

int32_t last_line() { return nbli() - 1; }

// Moves n lines in scope from `from` in direction `dir`; false when it ran
// into the end, with `to` at the limit.
bool count_lines(int32_t from, long n, int dir, int32_t &to)
{
    int32_t cur = from;
    while (n > 0) {
        int32_t next = cur + dir;
        if (next < topline || next > last_line()) {
            to = dir > 0 ? std::max(topline, last_line()) : topline;
            return false;
        }
        cur = next;
        if (xv->scope == 1 || xfinscope(cur))
            n--;
    }
    to = cur;
    return true;
}

bool case_equal(const char *a, const char *b, size_t n, bool respect)
{
    if (respect)
        return std::memcmp(a, b, n) == 0;
    for (size_t i = 0; i < n; i++)
        if (std::tolower((unsigned char)a[i]) != std::tolower((unsigned char)b[i]))
            return false;
    return true;
}

bool line_holds(int32_t li, std::string_view str)
{
    const xfline &l = xf->lines[li];
    bool respect = xf->case_mode == 1 || xf->case_mode == 3;
    if (str.size() > (size_t)l.len)
        return false;
    for (size_t k = 0; k + str.size() <= (size_t)l.len; k++)
        if (case_equal(l.text + k, str.data(), str.size(), respect))
            return true;
    return false;
}

// One positive string, searched forward or backward from the current line,
// once more from the other end when wrapping.
int string_target(std::string_view body, int dir)
{
    if (body.empty()) {
        xfmsg(169, 1);
        cmd_rc = 5;
        return -3;
    }
    char d = body[0];
    if (body[0] == '~' || std::isalnum((unsigned char)d) || d == ' ') {
        xfmsg(164, 1);
        cmd_rc = 1;
        return -3;
    }
    std::string_view str = body.substr(1);
    size_t close = str.rfind(d);
    if (close != std::string_view::npos) {
        if (close + 1 < str.size()) {
            xfmsg(164, 1); // compound targets come with the full target syntax
            cmd_rc = 1;
            return -3;
        }
        str = str.substr(0, close);
    }
    int32_t cur = curline();
    int32_t n = nbli();
    for (int32_t li = cur + dir; li >= 0 && li < n; li += dir)
        if (xfinscope(li) && line_holds(li, str))
            return li;
    int32_t li = dir > 0 ? 0 : n - 1;
    for (; dir > 0 ? li <= cur : li >= cur; li += dir)
        if (li >= 0 && li < n && xfinscope(li) && line_holds(li, str)) {
            xfmsg(23, 0);
            return li;
        }
    xfmsg(18, 1);
    cmd_rc = 2;
    return -2;
}

int bad_operand()
{
    xfmsg(16, 1);
    cmd_rc = 5;
    return 1;
}

// Up, Down and their kin: an optional count, or "*" for all the way.
int move_by(const xfcmd &c, int dir)
{
    if (!xf)
        return 1;
    std::string_view op = xftrim(c.ops());
    long n = 1;
    if (op == "*")
        n = 2147483647L;
    else if (!op.empty() && !xfnumber(op, n))
        return bad_operand();
    int32_t to;
    bool inside = count_lines(curline(), n, dir, to);
    curline() = to;
    if (!inside && op != "*") {
        cmd_rc = 1; // reaching an end is no failure to redisplay
        keep_rc_quiet = 1;
    }
    return 1;
}

int page_rows() { return 22; }

int page_by(const xfcmd &c, int dir)
{
    if (!xf)
        return 1;
    std::string_view op = xftrim(c.ops());
    long n = 1;
    if (op == "*")
        n = 2147483647L / page_rows();
    else if (!op.empty() && !xfnumber(op, n))
        return bad_operand();
    int64_t to = (int64_t)curline() + (int64_t)dir * n * page_rows();
    curline() = (int32_t)std::clamp<int64_t>(to, topline, std::max(topline, last_line()));
    return 1;
}

} // namespace

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

int xftarget_parse(std::string_view t, bool move)
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
        int k = xfpoint_find(t);
        if (k < 0) {
            xfmsg(165, 1);
            cmd_rc = 1;
            return -2;
        }
        result = xf->points[(size_t)k].li;
    } else if (t[0] == ':') {
        long n;
        if (!xfnumber(t.substr(1), n) || t.size() > 10) {
            xfmsg(54, 1);
            cmd_rc = 1;
            return -3;
        }
        result = (int32_t)std::clamp<long>(n - 1, topline, std::max(topline, last_line()));
    } else if (t == "*" || t == "+*") {
        result = std::max(topline, last_line());
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
            if (body.size() > 9 || !xfnumber(body, n)) {
                cmd_rc = 1;
                return -3;
            }
            bool inside = count_lines(cur, n, dir, result);
            if (!inside && move) {
                curline() = result;
                cmd_rc = 1;
                keep_rc_quiet = 1;
                return result;
            }
        } else {
            result = string_target(body, dir);
            if (result < 0)
                return result;
        }
    }
    if (!xfinscope(result) && xv->scope == 0) {
        xfmsg(55, 1);
        cmd_rc = 1;
        return -3;
    }
    if (move)
        curline() = result;
    return result;
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
    int r = xftarget_parse(line.substr(0, n), true);
    std::string_view rest = xftrim(line.substr(n));
    if (r >= -1 && !rest.empty() && (cmd_rc == 0 || keep_rc_quiet)) {
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

int xfcm_top(const xfcmd &c)
{
    xftrace("Commande xfcm_top");
    if (!xftrim(c.ops()).empty())
        return bad_operand();
    if (xf)
        curline() = topline;
    return 1;
}

int xfcm_bottom(const xfcmd &c)
{
    xftrace("Commande xfcm_bottom");
    if (!xftrim(c.ops()).empty())
        return bad_operand();
    if (xf)
        curline() = std::max(topline, last_line());
    return 1;
}

int xfcm_up(const xfcmd &c)
{
    xftrace("Commande xfcm_up");
    return move_by(c, -1);
}

int xfcm_down(const xfcmd &c)
{
    xftrace("Commande xfcm_down");
    return move_by(c, 1);
}

int xfcm_forward(const xfcmd &c)
{
    xftrace("Commande xfcm_forward");
    return page_by(c, 1);
}

int xfcm_backward(const xfcmd &c)
{
    xftrace("Commande xfcm_backward");
    return page_by(c, -1);
}

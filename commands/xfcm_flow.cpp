// Reflowing text between the margins: FLOW (paragraphs), and CEnter,
// LEFTAdjust and RIGHTAdjust (each line placed between two columns). The
// margins and the FORMAT settings are the file's: left, right, paragraph
// indent (absolute, or relative to the left margin), justify, paragraph
// rule and the blanks after a sentence.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cstring>

namespace {

enum { F_LEFT, F_RIGHT, F_PARA, F_REL, F_NOJUSTIFY, F_RULE, F_GAP };
enum { RULE_BLANK = 0, RULE_EXTENDED = 1, RULE_DOT = 2 };
enum { GAP_NONE = 0, GAP_SINGLE = 1, GAP_DOUBLE = 2 };

std::string_view text_of(int32_t li)
{
    const xfline &l = xf->lines[li];
    return std::string_view(l.text, (size_t)l.len);
}

int32_t columns(std::string_view s) { return xfcol_len(s.data(), (int32_t)s.size(), xf->utf8); }
size_t offset(std::string_view s, int32_t col)
{
    return (size_t)xfcol_off(s.data(), (int32_t)s.size(), col, xf->utf8);
}

bool blank_line(std::string_view t) { return t.find_first_not_of(' ') == std::string_view::npos; }

std::string_view trimmed(std::string_view t)
{
    size_t a = t.find_first_not_of(' ');
    if (a == std::string_view::npos)
        return {};
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

bool sentence_end(std::string_view t)
{
    t = trimmed(t);
    return !t.empty() && std::strchr(".!?", t.back());
}

// A line that, under the extended rule, starts a paragraph of its own.
bool opener(std::string_view t)
{
    return xf->format[F_LEFT] == 0 && !t.empty() && std::strchr("\t :.", t[0]);
}

// The paragraph at or after line `from`: its first and last line.
bool find_paragraph(int32_t from, int32_t &a, int32_t &b)
{
    int rule = xf->format[F_RULE];
    bool dot = rule & RULE_DOT, ext = rule & RULE_EXTENDED;
    int32_t k = std::max(from, 0);
    while (k < nbli() && blank_line(text_of(k)))
        k++;
    if (k >= nbli())
        return false;
    a = k;
    while (a > 0 && !(ext && opener(text_of(a)))) {
        std::string_view above = text_of(a - 1);
        if (blank_line(above) || (dot && sentence_end(above)))
            break;
        a--;
    }
    b = k;
    while (b + 1 < nbli()) {
        if (dot && sentence_end(text_of(b)))
            break;
        std::string_view below = text_of(b + 1);
        if (blank_line(below) || (ext && opener(below)))
            break;
        b++;
    }
    return true;
}

// The words of lines a..b joined: one blank at a line break, or after a
// sentence's end the FORMAT gap (NONE keeps the break, as a line feed).
std::string gather(int32_t a, int32_t b, std::string_view first)
{
    std::string out(trimmed(first));
    for (int32_t li = a + 1; li <= b; li++) {
        std::string_view t = trimmed(text_of(li));
        if (t.empty())
            continue;
        if (!out.empty()) {
            bool end = std::strchr(".!?", out.back()) != nullptr;
            int gap = xf->format[F_GAP];
            out += !end ? " " : gap == GAP_DOUBLE ? "  " : gap == GAP_NONE ? "\n" : " ";
        }
        out += t;
    }
    return out;
}

// Pads a line to `width` columns by widening its gaps, the leftmost first.
std::string justified(const std::string &line, int32_t width)
{
    int32_t extra = width - columns(line);
    std::vector<size_t> gaps; // byte offsets where a run of blanks begins
    for (size_t i = 1; i < line.size(); i++)
        if (line[i] == ' ' && line[i - 1] != ' ')
            gaps.push_back(i);
    if (extra <= 0 || gaps.empty())
        return line;
    std::string out;
    size_t g = 0, each = (size_t)extra / gaps.size(), more = (size_t)extra % gaps.size();
    for (size_t i = 0; i < line.size(); i++) {
        if (g < gaps.size() && gaps[g] == i) {
            out.append(each + (g < more ? 1 : 0), ' ');
            g++;
        }
        out += line[i];
    }
    return out;
}

// Cuts the text into lines: the first `w1` columns wide behind `head`, the
// others `w2` wide behind `indent` blanks; at the last blank that fits, or
// inside a word longer than the width.
std::vector<std::string> cut(const std::string &text, const std::string &head, int32_t w1,
                             int32_t indent, int32_t w2)
{
    std::vector<std::string> out;
    bool justify = xf->format[F_NOJUSTIFY] == 0;
    size_t seg = 0;
    bool first = true;
    while (seg <= text.size()) {
        size_t nl = text.find('\n', seg);
        std::string_view part(text.data() + seg, (nl == std::string::npos ? text.size() : nl) - seg);
        size_t pos = 0;
        do {
            while (!first && pos < part.size() && part[pos] == ' ')
                pos++;
            int32_t width = std::max(1, first ? w1 : w2);
            std::string_view rest = part.substr(pos);
            size_t take = rest.size();
            if (columns(rest) > width) {
                take = offset(rest, width);
                if (rest[take] != ' ') {
                    size_t blank = rest.substr(0, take).find_last_of(' ');
                    if (blank != std::string_view::npos && blank > 0)
                        take = blank;
                }
            }
            std::string line(rest.substr(0, take));
            while (!line.empty() && line.back() == ' ')
                line.pop_back();
            pos += take;
            bool last = pos >= part.size() || part.substr(pos).find_first_not_of(' ') == std::string_view::npos;
            if (justify && !last)
                line = justified(line, width);
            out.push_back((first ? head : std::string((size_t)indent, ' ')) + line);
            first = false;
        } while (pos < part.size() && part.substr(pos).find_first_not_of(' ') != std::string_view::npos);
        if (nl == std::string::npos)
            break;
        seg = nl + 1;
    }
    return out;
}

// Flows the paragraph a..b; with `from_col` >= 0 the flow starts at that
// column of line a and what stands before it stays. Returns the line count.
int32_t flow_paragraph(int32_t a, int32_t b, int32_t from_col)
{
    const int32_t *f = xf->format;
    int32_t left = f[F_LEFT], right = f[F_RIGHT];
    int32_t para = f[F_PARA] >= 0 ? f[F_PARA] : left + f[F_REL];
    std::string_view t0 = text_of(a);
    std::string head;
    int32_t w1;
    if (from_col >= 0) {
        head.assign(t0.substr(0, offset(t0, from_col)));
        head.resize(head.size() + (size_t)std::max(0, from_col - columns(head)), ' ');
        t0 = t0.substr(std::min(t0.size(), offset(t0, from_col)));
        w1 = right - from_col + 1;
    } else {
        head.assign((size_t)para, ' ');
        w1 = right - para + 1;
    }
    std::vector<std::string> lines = cut(gather(a, b, t0), head, w1, left, right - left + 1);
    std::vector<xfline> nl;
    for (const std::string &s : lines) {
        std::string t = s.empty() ? std::string(" ") : s;
        xfline l{(char *)xfmalloc(t.size() + 1), (int32_t)t.size(), 0, 0};
        std::memcpy(l.text, t.data(), t.size());
        l.text[t.size()] = 0;
        nl.push_back(l);
    }
    int32_t n = b - a + 1, m = (int32_t)nl.size();
    xf_do('D', nullptr, a, n, 1, nullptr, "xfflow_par:141");
    xfshift_up(a, n, a);
    xf_do('I', nullptr, a - 1, m, 1, nl.data(), "xfflow_par:141");
    xfshift_down(a - 1, m);
    return m;
}

// A target that was not found (2) or was wrong (5) has given its message.
int target_failed(int r)
{
    cmd_rc = r == -2 ? 2 : 5;
    return 1;
}

int refuse(int msg, int rc)
{
    xfmsg(msg, 1);
    cmd_rc = rc;
    return 1;
}

} // namespace

// FLOW [n | target | cursor | cursor_strict]: n paragraphs from the current
// line, or those that start on the target's lines, or the one round the
// cursor flowed from the cursor's column.
int xfcm_flow(const xfcmd &c)
{
    xftrace("Commande xfcm_flow");
    if (!xf)
        return 1;
    std::string_view ops = xftrim(c.ops());
    std::string w = xffold(ops);
    if (!w.empty() && (abbrev(w, "cursor", 6) || abbrev(w, "cursor_strict", 8))) {
        xfcursor cur = xfcursor_now();
        if (cur.fld != 0 || cur.li < 0 || cur.li >= nbli() || cur.col > xf->format[F_RIGHT])
            return refuse(6, 1);
        bool strict = w.size() > 6;
        if (strict && cur.col < xf->format[F_LEFT])
            return 1; // the cursor in the margin moves nothing
        int32_t a, b;
        if (!find_paragraph(cur.li, a, b) || a > cur.li || b < cur.li)
            return 1;
        flow_paragraph(cur.li, b, cur.col);
        return 1;
    }
    int32_t from = std::max(curline(), 0);
    int64_t paragraphs = 1, last = nbli() - 1;
    long num;
    if (!ops.empty() && xfnumber(ops, num)) {
        if (num < 1)
            return refuse(16, 5);
        paragraphs = num;
    } else if (!ops.empty()) {
        std::string_view rest = ops;
        int64_t count = 0;
        int r = xftarget_forward(rest, count);
        if (r != 0)
            return target_failed(r);
        if (!xftrim(rest).empty())
            return refuse(16, 5);
        int32_t first;
        int64_t n;
        if (!xfcount_range(count, first, n))
            return 1;
        from = first;
        last = first + n - 1;
        paragraphs = INT64_MAX;
    }
    int32_t a, b, after = -1;
    for (int64_t k = 0; k < paragraphs && find_paragraph(from, a, b) && a <= last; k++) {
        int32_t m = flow_paragraph(a, b, -1);
        last += m - (b - a + 1);
        from = after = a + m;
    }
    if (after >= 0 && after < nbli())
        curline() = after;
    return 1;
}

namespace {

enum place { CENTRE, LEFT, RIGHT };

int adjust(const xfcmd &c, place how)
{
    if (!xf)
        return 1;
    std::string_view ops = c.ops();
    int64_t count = 1;
    if (!xftrim(ops).empty()) {
        int r = xftarget_count(ops, count);
        if (r != 0)
            return target_failed(r);
    }
    int32_t col1 = xf->format[F_LEFT], col2 = xf->format[F_RIGHT];
    std::string_view w1 = xfword(ops), w2 = xfword(ops);
    long c1, c2;
    if (!w1.empty()) {
        if (w2.empty() || !xfnumber(w1, c1) || !xfnumber(w2, c2) || c1 < 1 || c2 < c1 ||
            !xftrim(ops).empty())
            return refuse(16, 5);
        col1 = (int32_t)c1 - 1;
        col2 = (int32_t)c2 - 1;
    }
    int32_t first;
    int64_t n;
    if (!xfcount_range(count, first, n))
        return 1;
    int32_t width = col2 - col1 + 1;
    for (int32_t li = std::max(first, 0); li < first + n && li < nbli(); li++) {
        if (!xfinscope(li))
            continue;
        std::string_view t = text_of(li);
        size_t a = offset(t, col1), b = offset(t, col2 + 1);
        std::string_view mid = trimmed(t.substr(std::min(a, t.size()), b > a ? b - a : 0));
        if (mid.empty())
            continue;
        int32_t room = std::max(0, width - columns(mid));
        int32_t before = how == LEFT ? 0 : how == RIGHT ? room : room / 2;
        std::string now(t.substr(0, std::min(a, t.size())));
        now.resize(now.size() + (size_t)std::max(0, col1 - columns(now)), ' ');
        now.append((size_t)before, ' ');
        now += mid;
        if (b < t.size()) {
            now.append((size_t)(room - before), ' ');
            now += t.substr(b);
        }
        while (now.size() > 1 && now.back() == ' ' && !xf->keepblanks)
            now.pop_back();
        if (now != t)
            xf_do('r', now, li, "xfcm_center");
    }
    return 1;
}

} // namespace

int xfcm_center(const xfcmd &c)
{
    xftrace("Commande xfcm_center");
    return adjust(c, CENTRE);
}

int xfcm_leftadjust(const xfcmd &c)
{
    xftrace("Commande xfcm_leftadjust");
    return adjust(c, LEFT);
}

int xfcm_rightadjust(const xfcmd &c)
{
    xftrace("Commande xfcm_rightadjust");
    return adjust(c, RIGHT);
}

// Moving the current line: TOP, Bottom, Up, Down/Next, FORward and
// BAckward.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

int32_t last_line() { return nbli() - 1; }

int bad_operand()
{
    xfmsg(16, 1);
    cmd_rc = 5;
    return 1;
}

// Up, Down and their kin: an optional count, or "*" for all the way; the
// same move as the relative target.
int move_by(const xfcmd &c, int dir)
{
    if (!xf)
        return 1;
    std::string_view op = xftrim(c.ops());
    long n = 1;
    if (op == "*") {
        curline() = dir > 0 ? std::max(topline, last_line()) : topline;
        return 1;
    }
    if (!op.empty() && !xfnumber(op, n))
        return bad_operand();
    n = std::min(n, 999999999L); // a target's count has nine digits at most
    std::string t = (dir > 0 ? "+" : "-") + std::to_string(n);
    xftarget_parse(t, true, true);
    return 1;
}

// A page is the file area as the view shows it, less one line kept in
// sight for context; 22 before the first page is drawn (batch).
int page_rows()
{
    if (!xv || xv->rows.size() < 3)
        return 22;
    return (int)xv->rows.size() - 1;
}

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

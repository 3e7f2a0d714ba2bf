// Entering text from the command line: Input, Replace and Add.
#include "commands/commands.h"
#include "commands/handlers.h"
#include "commands/internal.h"
#include "session/xed.h"

namespace {

// The text behind the command word and its one separating blank; further
// blanks belong to the text.
std::string text_operand(const xfcmd &c)
{
    std::string_view t = c.norm.substr(std::min(c.norm.size(), (size_t)c.typed));
    if (!t.empty() && t.front() == ' ')
        t.remove_prefix(1);
    std::string s(t);
    if (!xf->keepblanks)
        while (!s.empty() && s.back() == ' ')
            s.pop_back();
    return s;
}

} // namespace

int xfcm_input(const xfcmd &c)
{
    xftrace("Commande xfcm_input");
    if (!xf)
        return 1;
    std::string t = text_operand(c);
    int32_t at = curline();
    xf_do('i', t, at, "xfcm_input");
    xfshift_down(at, 1);
    curline() = at + 1;
    return 1;
}

int xfcm_replace(const xfcmd &c)
{
    return modes.command_ispf ? xfcm_pdfreplace(c) : xfcm_xedreplace(c);
}

int xfcm_xedreplace(const xfcmd &c)
{
    xftrace("Commande xfcm_replace");
    if (!xf)
        return 1;
    std::string t = text_operand(c);
    int32_t at = curline();
    if (at < 0 || at >= nbli()) {
        // On the top-of-file line there is nothing to replace: the text
        // becomes the first line.
        xf_do('i', t, -1, "xfcm_replace");
        xfshift_down(-1, 1);
        curline() = 0;
        return 1;
    }
    xf_do('r', t, at, "xfcm_replace");
    return 1;
}

int xfcm_add(const xfcmd &c)
{
    xftrace("Commande xfcm_add");
    if (!xf)
        return 1;
    long n;
    if (!xfcount_lines(c, n))
        return 1;
    xfadd(curline(), (int32_t)n, 1);
    return 1;
}

// The help pages: one data file shipped beside the program holds a page for
// every command and every REXX built-in, plus a few topics. This file reads
// it and finds pages; the commands that show them are in xfcm_help.cpp.
//
// The file is plain text. `#` in the first column starts a comment. A line
// `@kind name` starts a page (kind `command`, `rexx` or `task`); then
// `syntax: ...` gives the page's one line of syntax, `example: ...` an
// example (more than one may follow), and every other line, blank ones
// included, is the page's text.
#include "commands/commands.h"
#include "session/xed.h"

#include <cctype>
#include <fstream>

namespace {

bool same_ci(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); i++)
        if (std::tolower((unsigned char)a[i]) != std::tolower((unsigned char)b[i]))
            return false;
    return true;
}

void trim_tail(std::vector<std::string> &text)
{
    while (!text.empty() && text.back().find_first_not_of(' ') == std::string::npos)
        text.pop_back();
}

} // namespace

bool xfhelp_parse(std::istream &in, std::vector<xfhelp_page> &pages, std::string &why)
{
    pages.clear();
    std::string line;
    int n = 0;
    while (std::getline(in, line)) {
        n++;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty() && line[0] == '#')
            continue;
        if (!line.empty() && line[0] == '@') {
            if (!pages.empty())
                trim_tail(pages.back().text);
            size_t sp = line.find(' ');
            std::string kind = line.substr(1, sp == std::string::npos ? std::string::npos : sp - 1);
            std::string name = sp == std::string::npos ? "" : std::string(xftrim(line.substr(sp + 1)));
            if ((kind != "command" && kind != "rexx" && kind != "task") || name.empty()) {
                why = "line " + std::to_string(n) + ": a page must begin \"@command name\", \"@rexx name\" or \"@task name\"";
                return false;
            }
            pages.push_back({kind, name, "", {}, {}});
            continue;
        }
        if (pages.empty()) {
            if (xftrim(line).empty())
                continue;
            why = "line " + std::to_string(n) + ": text before the first page";
            return false;
        }
        xfhelp_page &p = pages.back();
        if (line.rfind("syntax:", 0) == 0)
            p.syntax = std::string(xftrim(std::string_view(line).substr(7)));
        else if (line.rfind("example:", 0) == 0)
            p.examples.emplace_back(xftrim(std::string_view(line).substr(8)));
        else if (p.text.empty() && xftrim(line).empty())
            continue;
        else
            p.text.push_back(line);
    }
    if (!pages.empty())
        trim_tail(pages.back().text);
    return true;
}

const xfhelp_page *xfhelp_find(const std::vector<xfhelp_page> &pages, std::string_view kind,
                               std::string_view name)
{
    for (const xfhelp_page &p : pages)
        if (p.kind == kind && same_ci(p.name, name))
            return &p;
    return nullptr;
}

std::string xfhelp_file()
{
    const std::string tries[] = {installdir + "share/vorta/help.pages", installdir + "../share/vorta/help.pages"};
    for (const std::string &t : tries) {
        std::ifstream f(t);
        if (f)
            return t;
    }
    return "";
}

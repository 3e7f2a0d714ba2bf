// The directory table: every directory a list has shown, by its place, which
// the user sees as a file mode of two letters.
#include "flist/flist.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <sys/stat.h>

std::vector<std::string> fl_dirs;

std::string fl_mode_letters(int index)
{
    if (index < 0 || index > 701)
        return "??";
    if (index < 26)
        return std::string(1, char('a' + index)) + " ";
    // The first letter runs fastest; the second counts from 1.
    return {char('a' + index % 26), char('a' + index / 26 - 1)};
}

int fl_mode_index(std::string_view m)
{
    auto place = [](char c) { return c >= 'a' && c <= 'z' ? c - 'a' : c >= 'A' && c <= 'Z' ? c - 'A' : -1; };
    if (m.size() == 1 || (m.size() == 2 && m[1] == ' '))
        return place(m[0]);
    if (m.size() != 2 || place(m[0]) < 0 || place(m[1]) < 0)
        return -1;
    return place(m[0]) + 26 * (place(m[1]) + 1);
}

void fl_dirs_make()
{
    if (!fl_dirs.empty())
        return;
    // The working directory as it is now, by its real path: the letters
    // `a ` keep their meaning for entries already listed after a later CD.
    // A working directory that is gone has no path, and so matches none.
    char buf[PATH_MAX];
    fl_dirs.push_back(realpath(".", buf) ? std::string(buf) : std::string());
}

std::string fl_path_text()
{
    fl_dirs_make();
    std::string all = ".";
    for (size_t i = 1; i < fl_dirs.size(); i++)
        all += ";" + fl_dirs[i];
    return all;
}

int fl_dir_enter(const std::string &path, int &index)
{
    fl_dirs_make();
    if (path.size() > FL_MAXDIRLEN)
        return 3;
    // The real path: a link into a directory already listed finds its
    // place again, and a loop of links cannot make new places for ever.
    char buf[PATH_MAX];
    if (!realpath(path.c_str(), buf))
        return errno == ENAMETOOLONG ? 3 : 2;
    struct stat st;
    if (stat(buf, &st) != 0 || !S_ISDIR(st.st_mode))
        return 2;
    std::string norm(buf);
    if (norm.size() > FL_MAXDIRLEN)
        return 3;
    for (size_t i = 0; i < fl_dirs.size(); i++)
        if (fl_dirs[i] == norm) {
            index = int(i);
            return 0;
        }
    if (fl_dirs.size() >= FL_MAXDIRS)
        return 5;
    fl_dirs.push_back(norm);
    index = int(fl_dirs.size() - 1);
    return 0;
}

std::string fl_dir_message(int code)
{
    static const char *const texts[] = {"", "", ".... Invalid directory", ".... Directory too long",
                                        ".... Invalid file mode", ".... Too many directories"};
    return code > 0 && code < 6 ? texts[code] : "";
}

// The questions the list asks in a box over its page: the sort menu, and
// whether a program opened by a click is to be run or edited. Each is a
// column of buttons, one a choice, so that the arrows, Enter, a click and
// Escape work alike on every screen.
#include "flist/flist.h"

#include "fields/dialogs/dialogs.h"

#include <iterator>

namespace {

// A row of a menu: its text and the one-character action it stands for.
struct menu_row {
    const char *label;
    char action;
};

constexpr menu_row sort_rows[] = {
    {"By Name", '0'}, {"By Name Reversed", 'a'}, {"By Type", '1'}, {"By Type Reversed", 'b'},
    {"By Size", '2'}, {"By Size Reversed", 'c'}, {"By Date", '3'}, {"By Date Reversed", 'd'},
};
static_assert(std::size(sort_rows) == 8, "the sort menu has eight rows");

// The keys of the sort actions: a digit for the plain order, the letter of
// the same place for the reversed one.
constexpr int action_keys[] = {FL_BYNAME, FL_BYTYPE, FL_BYSIZE, FL_BYTIME};

constexpr menu_row run_rows[] = {{"&Run", 'r'}, {"&Edit", 'e'}};

// Shows the rows as a menu with the row `first` focused; the action of the
// row chosen, 0 when the menu was closed or cannot be shown.
template <size_t N> char menu(const menu_row (&rows)[N], const std::string &title, int first)
{
    std::vector<std::string> labels;
    for (const menu_row &r : rows)
        labels.push_back(r.label);
    int chosen = dy_menu(labels, title, first);
    return chosen ? rows[chosen - 1].action : 0;
}

} // namespace

int fl_sort_action(char action)
{
    if (action >= '0' && action <= '3')
        return action_keys[action - '0'];
    if (action >= 'a' && action <= 'd')
        return action_keys[action - 'a'] | FL_REVERSED;
    return -1;
}

bool fl_sort_menu(fl_level &lv)
{
    // The menu opens on the order the list has now.
    int now = 0;
    for (size_t k = 0; k < std::size(sort_rows); k++)
        if (fl_sort_action(sort_rows[k].action) == lv.sort)
            now = int(k);
    int code = fl_sort_action(menu(sort_rows, "Sort", now));
    if (code < 0)
        return false;
    fl_resort(lv, code);
    return true;
}

int fl_ask_run(const std::string &path)
{
    switch (menu(run_rows, fl_shown(fl_basename(path)), 0)) {
    case 'r': return FL_ASK_RUN;
    case 'e': return FL_ASK_EDIT;
    default: return FL_ASK_NONE;
    }
}

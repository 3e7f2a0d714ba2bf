// Menus of single fields, and which menu a mouse press opens: a field's own
// menu for its button, else the page's pop-up. A field menu's choice writes
// the item's command into the field, as if typed there, and either ends the
// read (code 30 with the item's number) or lets the user go on editing it.
#include "fields/fs_int.h"
#include <algorithm>

namespace {

int nextid = FS_FIELDMENU_ID;        // ids run on from one menu to the next
int clickline = 1, clickcol = 1;     // where the open field menu was asked for

// Ids for count items that no other live menu is likely to hold; the range
// starts again once it is used up.
int takeids(int count) {
  if (nextid + count > FS_TOOLBAR_ID) nextid = FS_FIELDMENU_ID;
  int first = nextid;
  nextid += count;
  return first;
}

}  // namespace

int asfmenu(int id, int button, int count, const char *const *titles, const char *const *commands,
            int flag) {
  if (!fs_started("asfmenu : call fsinit() first")) return as_errno;
  int pos = fs_find(id);
  if (!pos) {
    fs_err(AS_ENOTFOUND, "asfmenu : field %6.6d does not exist", id);
    return as_errno;
  }
  as_errno = 0;
  std::shared_ptr<fs_fieldmenu> &slot = pg().menu[size_t(pos - 1)];
  count = std::min(count, FS_TOOLBAR_ID - FS_FIELDMENU_ID);
  if (count <= 0) {
    slot.reset();
    return 0;
  }
  auto m = std::make_shared<fs_fieldmenu>();
  m->button = button;
  m->flag = flag;
  m->first = takeids(count);
  for (int i = 0; i < count; i++) {
    m->titles.emplace_back(titles && titles[i] ? titles[i] : "");
    if (commands) m->commands.emplace_back(commands[i] ? commands[i] : "");
  }
  slot = std::move(m);
  return 0;
}

const fs_fieldmenu *fs_fieldmenuget(int id) {
  if (!fs.started || fs.cur < 0) return nullptr;
  int pos = fs_find(id);
  return pos ? pg().menu[size_t(pos - 1)].get() : nullptr;
}

bool fs_menupress(int pos, int button, bool alt, const fs_event &e, int line, int col) {
  if (!fs.plat) return false;
  fs_pagerec &p = pg();
  const fs_fieldmenu *m = pos ? p.menu[size_t(pos - 1)].get() : nullptr;
  if (m && m->button == button && fs.plat->fieldmenu(*m, e.x, e.y)) {
    clickline = line;
    clickcol = col;
    return true;
  }
  // Where button 3 places the cursor, the pop-up wants Alt with it, except
  // on the fields marked to have it on the plain button. A page that takes
  // every click itself (a list, a box) keeps the button for its own menus.
  const fsfield *f = pos ? &p.fld[size_t(pos - 1)] : nullptr;
  bool wanted = fs.clickpos && (!fs.rightpos || alt || (f && f->mgd));
  return button == 3 && wanted && fs_menuget(1) && fs.plat->popup(e.x, e.y);
}

int fs_fieldchoice(int itemid, int *value) {
  fs_pagerec &p = pg();
  for (size_t i = 0; i < p.menu.size(); i++) {
    const fs_fieldmenu *m = p.menu[i].get();
    if (!m || itemid < m->first || itemid >= m->first + int(m->titles.size())) continue;
    int n = itemid - m->first;
    int pos = int(i) + 1;
    if (n < int(m->commands.size()) && !m->commands[n].empty()) {
      fs_settext(pos, m->commands[n].c_str());
      if (!p.modified[i]) fs.readmod++;
      p.modified[i] = 1;
      const fs_cells &c = p.cells[i];
      if (!c.line.empty()) {
        p.cur_line = c.line[0];
        p.cur_col = c.col[0];
      }
    }
    p.mouse_line = clickline;
    p.mouse_col = clickcol;
    if (!m->flag) return -1;
    *value = n + 1;
    return 30;
  }
  return -1;  // the field or its menu went while the menu was open
}

// Menus: the text files that describe them, read with their includes into a
// tree of titles and commands, the bar and the page's pop-up kept here with
// the ids of their items, and the look-up of a chosen item's command. The
// window layer only shows what is kept here.
#include "fields/fs_int.h"
#include <cerrno>
#include <cstring>
#include <fstream>

namespace {

std::unique_ptr<fs_menu> kept[2];  // the bar, the page's pop-up

std::vector<std::string> words(const std::string &line) {
  std::vector<std::string> out;
  size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) i++;
    size_t b = i;
    while (i < line.size() && line[i] != ' ' && line[i] != '\t') i++;
    if (i > b) out.push_back(line.substr(b, i - b));
  }
  return out;
}

std::string homed(const std::string &name, const std::string &home) {
  if (name.compare(0, 7, "$xhome/") == 0 || name.compare(0, 7, "$xhome\\") == 0) {
    std::string h = home;
    if (!h.empty() && h.back() != '/') h += '/';
    return h + name.substr(7);
  }
  return name;
}

// The lines of a file with its includes put in place, by text, in a loop
// (no recursion, so a file that includes itself only grows the list).
bool expand(const std::string &path, const std::string &home, std::vector<std::string> &out,
            std::string &err) {
  struct pending {
    std::vector<std::string> lines;  // the file's lines
    size_t next = 0;                 // the next to take
  };
  auto load = [&](const std::string &name, pending &p) {
    std::ifstream in(name);
    if (!in) {
      err = "Unable to read file " + name + ": " + strerror(errno ? errno : ENOENT);
      return false;
    }
    std::string l;
    while (std::getline(in, l)) {
      if (!l.empty() && l.back() == '\r') l.pop_back();
      p.lines.push_back(l);
    }
    return true;
  };
  std::vector<pending> stack(1);
  if (!load(homed(path, home), stack[0])) return false;
  while (!stack.empty()) {
    pending &top = stack.back();
    if (top.next >= top.lines.size()) {
      stack.pop_back();
      continue;
    }
    std::string line = top.lines[top.next++];
    std::vector<std::string> w = words(line);
    bool include = w.size() == 2 && w[0] == "INCLUDE";
    bool submenu = w.size() == 3 && w[1] == "MENU";
    if (submenu) out.push_back(w[0] + " MENU");
    if (!include && !submenu) out.push_back(line);
    if (out.size() >= size_t(FS_MENU_MAXLINES)) {
      err = "Buffer overflow: file " + path + " may contain a recursive call to another file.";
      return false;
    }
    if (include || submenu) {
      pending p;
      if (!load(homed(w.back(), home), p)) return false;
      stack.push_back(std::move(p));
    }
  }
  return true;
}

// Splits a menu line into its title and command; false for a line that is
// no item (empty, a comment). A title with nothing after it sets bad.
bool item(const std::string &line, std::string &title, std::string &cmd, bool &bad) {
  bad = false;
  size_t i = line.find_first_not_of(" \t");
  if (i == std::string::npos || line[i] == '#') return false;
  size_t end;
  if (line[i] == '"') {
    end = line.find('"', i + 1);
    if (end == std::string::npos) end = line.size();
    title = line.substr(i + 1, end - i - 1);
    end++;
  } else {
    end = line.find_first_of(" \t", i);
    if (end == std::string::npos) end = line.size();
    title = line.substr(i, end - i);
  }
  size_t c = end < line.size() ? line.find_first_not_of(" \t", end) : std::string::npos;
  if (c == std::string::npos) {
    bad = true;
    return true;
  }
  size_t e = line.find_last_not_of(" \t");
  cmd = line.substr(c, e - c + 1);
  return true;
}

void number(fs_menu &m, int &next) {
  for (auto &it : m.items) {
    if (it.sub) number(*it.sub, next);
    else it.id = next++;
  }
}

const fs_menu::item *find(const fs_menu *m, int id) {
  if (!m) return nullptr;
  for (auto &it : m->items) {
    if (it.id == id) return &it;
    if (const fs_menu::item *s = find(it.sub.get(), id)) return s;
  }
  return nullptr;
}

}  // namespace

std::unique_ptr<fs_menu> fs_menuread(const std::string &path, const std::string &home,
                                     std::vector<std::string> &errors) {
  std::vector<std::string> lines;
  std::string err;
  if (!expand(path, home, lines, err)) {
    errors.push_back(err);
    return nullptr;
  }
  auto root = std::make_unique<fs_menu>();
  std::vector<fs_menu *> open{root.get()};  // the menu being filled, innermost last
  std::vector<std::string> openers;         // the line that opened each sub-menu
  for (const std::string &line : lines) {
    std::string title, cmd;
    bool bad;
    if (!item(line, title, cmd, bad)) continue;
    if (bad) {
      errors.push_back("..... Invalid menu string \"" + line + "\"");
      continue;
    }
    if (title == "END" && cmd == "MENU" && open.size() > 1) {
      open.pop_back();
      openers.pop_back();
      continue;
    }
    fs_menu::item it;
    it.title = title;
    if (cmd == "MENU") {
      it.sub = std::make_unique<fs_menu>();
      fs_menu *sub = it.sub.get();
      open.back()->items.push_back(std::move(it));
      open.push_back(sub);
      openers.push_back(line);
      continue;
    }
    it.command = cmd;
    open.back()->items.push_back(std::move(it));
  }
  // Sub-menus still open at the end keep what they got.
  for (const std::string &l : openers) errors.push_back("..... Invalid submenu \"" + l + "\"");
  return root;
}

void fs_menuset(int which, std::unique_ptr<fs_menu> menu) {
  if (which < 0 || which > 1) return;
  int next = which == 0 ? 0 : FS_POPUP_ID;
  if (menu) number(*menu, next);
  kept[which] = std::move(menu);
  if (fs.plat) fs.plat->menus(kept[0].get(), kept[1].get());
}

const fs_menu *fs_menuget(int which) { return which == 0 || which == 1 ? kept[which].get() : nullptr; }

const char *fs_menucmd(int id) {
  const fs_menu::item *it = find(kept[id >= FS_POPUP_ID ? 1 : 0].get(), id);
  return it && !it->sub ? it->command.c_str() : nullptr;
}

// The file box: a folder's entries in a list (folders first, marked with a
// "/", ".." to go up), a line for the name, OK and Cancel. Choosing a folder
// lists it; choosing a file puts its name on the line, and choosing it again
// takes it. The same box asks for a name to open and a name to write, and,
// listing folders only, for a folder.
#include "fields/dialogs/dy_int.h"
#include "fields/fields.h"
#include "fields/fs_int.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string last_folder;  // where the last file box ended, for "//last"

// The items of the box, by their place in the description.
enum : int { I_FOLDER, I_LIST, I_NAMELABEL, I_NAME, I_COMPLAINT, I_OK, I_CANCEL };

bool is_folder(const std::string &path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool is_file(const std::string &path) {
  struct stat st;
  return stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

// The folder's entries: ".." unless at the root, then folders, then the
// rest (unless only folders are asked for), each sorted by bytes. False
// when the folder cannot be read: only ".." is offered then, so that the
// user can always get out.
bool entries(const std::string &folder, bool folders_only, std::vector<std::string> &out) {
  out.clear();
  if (folder != "/") out.push_back("../");
  DIR *d = opendir(folder.c_str());
  if (!d) return false;
  std::vector<std::string> dirs, files;
  while (dirent *e = readdir(d)) {
    std::string n = e->d_name;
    if (n == "." || n == "..") continue;
    (is_folder(folder + "/" + n) ? dirs : files).push_back(n);
  }
  closedir(d);
  std::sort(dirs.begin(), dirs.end());
  std::sort(files.begin(), files.end());
  for (std::string &n : dirs) out.push_back(n + "/");
  if (!folders_only) out.insert(out.end(), files.begin(), files.end());
  return true;
}

// A name as typed, made absolute from the folder shown; "~" is the home
// folder. "." and ".." steps are folded away, so that the folder line
// stays short however the user walked.
std::string resolve(const std::string &folder, const std::string &name) {
  std::string p = name;
  const char *home = getenv("HOME");
  if (home && (p == "~" || p.rfind("~/", 0) == 0)) p = home + p.substr(1);
  if (p.empty() || p[0] != '/') p = folder + "/" + p;
  std::vector<std::string> parts;
  for (const std::string &s : dy_split(p, '/')) {
    if (s.empty() || s == ".") continue;
    if (s == "..") {
      if (!parts.empty()) parts.pop_back();
    } else {
      parts.push_back(s);
    }
  }
  std::string out;
  for (const std::string &s : parts) out += "/" + s;
  return out.empty() ? "/" : out;
}

std::string start_folder(const std::string &asked) {
  char buf[PATH_MAX];
  std::string cwd = getcwd(buf, sizeof buf) ? buf : "/";
  std::string f = asked;
  if (f == "//last") f = last_folder;
  if (f.empty()) return cwd;
  f = resolve(cwd, f);
  return is_folder(f) ? f : cwd;
}

// The tail of a path that fits in width columns.
std::string tail(const std::string &path, int width) {
  if (int(path.size()) <= width) return path;
  return "..." + path.substr(path.size() - size_t(std::max(0, width - 3)));
}

std::vector<dy_item> box(const std::string &folder, const std::vector<std::string> &list,
                         const std::string &name, const std::string &complaint) {
  int gl = 24, gc = 80;
  fs_grid(&gl, &gc);
  int width = std::clamp(gc - 10, 20, 60);
  int rows = std::clamp(gl - 13, 3, 12);
  std::vector<dy_item> items;
  items.push_back(dy_text_item(DY_KLABEL, 1, 0, "Folder: " + tail(folder, width - 8)));
  dy_item l = dy_text_item(DY_KSCL, 1, 1, "");
  l.lines = list;
  l.on.assign(list.size(), 0);
  l.height = rows;
  l.width = width;
  items.push_back(l);
  items.push_back(dy_text_item(DY_KLABEL, 1, rows + 3, "Name:"));
  dy_item in = dy_text_item(DY_KINPUT, 7, rows + 3, name);
  in.width = width - 6;
  items.push_back(in);
  items.push_back(dy_text_item(DY_KLABEL, 1, rows + 4, complaint));
  items.push_back(dy_text_item(DY_KBUTTON, 2, rows + 6, "OK"));
  items.push_back(dy_text_item(DY_KBUTTON, width - 10, rows + 6, "Cancel"));
  return items;
}

}  // namespace

const std::string &dy_lastfolder() { return last_folder; }

int dy_filebox(int mode, const std::string &title, const std::string &from, std::string &path) {
  if (!fs.started || dy_noscreen) return -1;
  std::string folder = start_folder(from), name = path, complaint;
  if (!name.empty() && name.find('/') != std::string::npos) {
    std::string full = resolve(folder, name);
    size_t s = full.rfind('/');
    if (is_folder(full.substr(0, s ? s : 1))) folder = full.substr(0, s ? s : 1), name = full.substr(s + 1);
  }
  std::vector<std::string> list;
  bool folders = mode == DY_FFOLDER;
  bool readable = entries(folder, folders, list);
  dy_modal how;
  how.picks = true;
  how.panel_keys = true;
  how.focus = I_NAME;
  int cursor = 0, top = 0;  // the list's, kept while the folder stays
  for (;;) {
    if (!readable) complaint = "Unable to read this folder";
    std::vector<dy_item> items = box(folder, list, name, complaint);
    items[I_LIST].cursor = std::min(cursor, std::max(0, int(list.size()) - 1));
    items[I_LIST].top = std::min(top, items[I_LIST].cursor);
    int answer = dy_run_modal(items, title, how);
    if (answer <= 0 || answer == 2) return answer < 0 ? -1 : 0;
    name = items[I_NAME].text;
    const dy_item &l = items[I_LIST];
    cursor = l.cursor, top = l.top;
    std::string picked = l.cursor < int(l.lines.size()) ? l.lines[size_t(l.cursor)] : "";
    complaint.clear();
    how.focus = I_NAME;
    if (folders && (answer == DY_PICK || answer == DY_PICK2)) {
      name = picked;  // every line is a folder: choosing one walks into it
    } else if (folders) {
      // OK takes the folder named on the line, or the one shown.
      std::string full = resolve(folder, name);
      if (!is_folder(full)) {
        complaint = "Folder not found";
        continue;
      }
      last_folder = path = full;
      return 1;
    } else if (answer == DY_PICK || answer == DY_PICK2) {
      bool again = picked == name;
      if (!picked.empty() && picked.back() != '/' && !again && answer == DY_PICK) {
        name = picked;  // a file is taken when it is chosen a second time
        how.focus = I_LIST;
        continue;
      }
      name = picked;
    } else if (name.empty()) {
      name = picked;  // OK on the list: what its cursor is on
    }
    if (name.empty()) continue;
    std::string full = resolve(folder, name);
    if (is_folder(full)) {
      // A folder chosen or typed: it is listed, and the list keeps the keys.
      folder = full;
      name.clear();
      cursor = top = 0;
      readable = entries(folder, folders, list);
      how.focus = I_LIST;
      continue;
    }
    size_t s = full.rfind('/');
    std::string dir = full.substr(0, s ? s : 1);
    // The folder box takes no file, even one chosen on a list gone stale.
    if (folders || (mode == DY_FOPEN ? !is_file(full) : !is_folder(dir))) {
      complaint = mode == DY_FOPEN ? "File not found" : "Folder not found";
      continue;
    }
    last_folder = dir;
    path = full;
    return 1;
  }
}

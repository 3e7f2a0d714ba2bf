// The settings store: a key is a file under $XDG_CONFIG_HOME/vorta/ named
// by its path, holding its values as "name=value" lines; a key that has
// subkeys is a folder, and then its own values live in the file ".values"
// inside it. The window memory and the macros' registry functions both
// keep their keys here. A key is written whole to a new file and renamed,
// so a crash never leaves half of one; it is read leniently, so a damaged
// line loses only itself.
#include "platform/platform.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char VALUES[] = ".values";

// One part of a key's path as a file name: '%' and '/' and a leading dot
// are percent-encoded, so no part can be ".", "..", ".values" or a
// temporary of ours.
std::string encode(const std::string &part)
{
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    for (size_t i = 0; i < part.size(); i++) {
        unsigned char c = (unsigned char)part[i];
        if (c == '%' || c == '/' || (c == '.' && i == 0) || c < 32) {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 15];
        } else {
            out += (char)c;
        }
    }
    return out;
}

std::string decode(const std::string &name)
{
    std::string out;
    for (size_t i = 0; i < name.size(); i++) {
        if (name[i] == '%' && i + 2 < name.size() + 0 && isxdigit((unsigned char)name[i + 1]) &&
            isxdigit((unsigned char)name[i + 2])) {
            out += (char)std::stoi(name.substr(i + 1, 2), nullptr, 16);
            i += 2;
        } else {
            out += name[i];
        }
    }
    return out;
}

// The parts of a key written with backslashes; empty parts are dropped.
std::vector<std::string> parts(const std::string &key)
{
    std::vector<std::string> v;
    size_t b = 0;
    for (;;) {
        size_t e = key.find('\\', b);
        std::string p = key.substr(b, e == std::string::npos ? std::string::npos : e - b);
        if (!p.empty())
            v.push_back(p);
        if (e == std::string::npos)
            return v;
        b = e + 1;
    }
}

std::string key_path(const std::vector<std::string> &p, size_t n)
{
    std::string path = pl_settings_dir();
    for (size_t i = 0; i < n && i < p.size(); i++)
        path += "/" + encode(p[i]);
    return path;
}

// Backslash, line end and (in names) '=' written as escapes.
std::string escaped(const std::string &s, bool name)
{
    std::string out;
    for (char c : s) {
        if (c == '\\' || (name && c == '='))
            out += '\\', out += c;
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else
            out += c;
    }
    return out;
}

// Reads an escaped text up to an unescaped `stop` (0: to the end).
std::string unescaped(const std::string &s, size_t &i, char stop)
{
    std::string out;
    for (; i < s.size() && s[i] != stop; i++) {
        if (s[i] == '\\' && i + 1 < s.size()) {
            char c = s[++i];
            out += c == 'n' ? '\n' : c == 'r' ? '\r' : c;
        } else {
            out += s[i];
        }
    }
    return out;
}

int kind(const std::string &path) // 0 none, 'f' file, 'd' folder
{
    struct stat st;
    if (lstat(path.c_str(), &st) != 0)
        return 0;
    return S_ISDIR(st.st_mode) ? 'd' : S_ISREG(st.st_mode) ? 'f' : '?';
}

std::string values_file(const std::string &path)
{
    return kind(path) == 'd' ? path + "/" + VALUES : path;
}

// Every level of the key made a folder: a level that is a key file
// becomes a folder holding its values as ".values".
int make_levels(const std::vector<std::string> &p, size_t n)
{
    std::string base = pl_settings_dir();
    if (base.empty())
        return ENOENT;
    for (size_t i = base.find('/', 1); i != std::string::npos; i = base.find('/', i + 1))
        mkdir(base.substr(0, i).c_str(), 0700);
    if (mkdir(base.c_str(), 0700) != 0 && errno != EEXIST)
        return errno;
    for (size_t i = 1; i <= n; i++) {
        std::string d = key_path(p, i);
        int k = kind(d);
        if (k == 'f') {
            std::string tmp = d + ".%conv";
            if (rename(d.c_str(), tmp.c_str()) != 0)
                return errno;
            if (mkdir(d.c_str(), 0700) != 0 || rename(tmp.c_str(), (d + "/" + VALUES).c_str()) != 0) {
                int e = errno;
                rename(tmp.c_str(), d.c_str());
                return e;
            }
        } else if (k == 0 && mkdir(d.c_str(), 0700) != 0 && errno != EEXIST) {
            return errno;
        } else if (k == '?') {
            return ENOTDIR;
        }
    }
    return 0;
}

int write_values(const std::string &file, const std::vector<pl_value> &v)
{
    std::string text;
    for (const pl_value &x : v)
        text += escaped(x.name, true) + "=" + escaped(x.text, false) + "\n";
    std::string tmp;
    int fd = pl_create_temp(file, 0600, tmp);
    if (fd < 0)
        return -fd;
    int err = pl_write_all(fd, text.data(), text.size());
    if (close(fd) != 0 && !err)
        err = errno;
    if (!err && rename(tmp.c_str(), file.c_str()) != 0)
        err = errno;
    if (err)
        unlink(tmp.c_str());
    return err;
}

// The file or folder of a key, "" when the key cannot be named.
std::string existing(const std::string &key)
{
    std::vector<std::string> p = parts(key);
    if (p.empty() || pl_settings_dir().empty())
        return "";
    return key_path(p, p.size());
}

} // namespace

std::string pl_settings_dir()
{
    const char *x = getenv("XDG_CONFIG_HOME");
    if (x && *x == '/')
        return std::string(x) + "/vorta";
    const char *h = getenv("HOME");
    if (h && *h == '/')
        return std::string(h) + "/.config/vorta";
    return "";
}

int pl_key_values(const std::string &key, std::vector<pl_value> &out)
{
    out.clear();
    std::string path = existing(key);
    int k = path.empty() ? 0 : kind(path);
    if (k == 0)
        return ENOENT;
    std::ifstream in(values_file(path));
    std::string line;
    while (in && std::getline(in, line)) {
        size_t i = 0;
        std::string name = unescaped(line, i, '=');
        if (i >= line.size())
            continue;
        i++;
        std::string text = unescaped(line, i, 0);
        auto same = [&](const pl_value &v) { return v.name == name; };
        auto it = std::find_if(out.begin(), out.end(), same);
        if (it == out.end())
            out.push_back({name, text});
        else
            it->text = text;
    }
    return 0;
}

int pl_key_subkeys(const std::string &key, std::vector<std::string> &out)
{
    out.clear();
    std::string path = existing(key);
    int k = path.empty() ? 0 : kind(path);
    if (k != 'd')
        return k == 0 ? ENOENT : 0;
    DIR *d = opendir(path.c_str());
    if (!d)
        return errno;
    while (dirent *e = readdir(d))
        if (e->d_name[0] != '.')
            out.push_back(decode(e->d_name));
    closedir(d);
    std::sort(out.begin(), out.end());
    return 0;
}

int pl_key_put(const std::string &key, const std::vector<pl_value> &values)
{
    std::vector<std::string> p = parts(key);
    if (p.empty())
        return EINVAL;
    if (int e = make_levels(p, p.size() - 1))
        return e;
    return write_values(values_file(key_path(p, p.size())), values);
}

int pl_key_delete(const std::string &key)
{
    std::vector<std::string> p = parts(key);
    if (p.empty() || pl_settings_dir().empty())
        return EINVAL;
    std::string path = key_path(p, p.size());
    if (kind(path) == 0)
        return ENOENT;
    return pl_remove_tree(path);
}

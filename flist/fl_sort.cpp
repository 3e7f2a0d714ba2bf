// The display order of a level: by name, type, size or time, each also
// reversed, with the parent entry always first.
#include "flist/flist.h"

#include "fields/fields.h"

#include <algorithm>
#include <cstring>

namespace {

// Blank-padded comparison: "ab" sorts as "ab " would against "ab-c".
int padded(std::string_view a, std::string_view b)
{
    size_t m = std::min(a.size(), b.size());
    if (int c = m ? std::memcmp(a.data(), b.data(), m) : 0)
        return c < 0 ? -1 : 1;
    // The longer one goes on against blanks.
    std::string_view rest = a.size() > m ? a.substr(m) : b.substr(m);
    int sign = a.size() > m ? 1 : -1;
    for (unsigned char x : rest)
        if (x != ' ')
            return x > ' ' ? sign : -sign;
    return 0;
}

struct sortkey {
    bool parent;          // `..`: before every other entry
    int64_t value;        // size or time
    uint64_t head;        // the first eight bytes of the first text compared
    std::string_view stem, ext;
};

// Eight bytes of a blank-padded text as one number that orders as they do:
// most names differ there, and one compare of numbers settles them.
uint64_t head_of(std::string_view t)
{
    uint64_t h = 0;
    for (size_t i = 0; i < 8; i++)
        h = h << 8 | (i < t.size() ? (unsigned char)t[i] : ' ');
    return h;
}

struct comparer {
    int key;              // sort code without the reversal
    bool reversed;
    // The plain order of two keys, before any reversal: -1, 0 or 1.
    int plain(const sortkey &a, const sortkey &b) const
    {
        if (key == FL_BYSIZE || key == FL_BYTIME)
            return a.value < b.value ? -1 : a.value > b.value;
        if (a.head != b.head)
            return a.head < b.head ? -1 : 1;
        int first = key == FL_BYNAME ? padded(a.stem, b.stem) : padded(a.ext, b.ext);
        return first ? first : key == FL_BYNAME ? padded(a.ext, b.ext) : padded(a.stem, b.stem);
    }
    bool before(const sortkey &a, int32_t ia, const sortkey &b, int32_t ib) const
    {
        if (a.parent != b.parent)
            return a.parent;
        int c = plain(a, b);
        // Equal sizes or times go by name, so that the order does not
        // depend on the order the directory gives its names in.
        if (c == 0 && key != FL_BYNAME && key != FL_BYTYPE)
            c = padded(a.stem, b.stem) ? padded(a.stem, b.stem) : padded(a.ext, b.ext);
        if (reversed)
            c = -c;
        return c ? c < 0 : ia < ib;
    }
};

sortkey key_of(const fl_list &l, size_t i, int key)
{
    sortkey k{fl_is_parent(l, i), 0, 0, {}, {}};
    const fl_status &s = l.st[i];
    // Directories show no size, and sort as empty.
    int64_t size = fl_is_dir(s) ? 0 : s.size;
    k.value = key == FL_BYSIZE ? size : s.mtime ? s.mtime : s.ctime ? s.ctime : s.atime;
    std::string_view whole(l.name[i]);
    size_t slash = whole.rfind('/');
    fl_split(slash == std::string_view::npos ? whole : whole.substr(slash + 1), k.stem, k.ext);
    k.head = head_of(key == FL_BYTYPE ? k.ext : k.stem);
    return k;
}

} // namespace

void fl_sort(fl_level &lv)
{
    fl_list &l = lv.list;
    if (fs_curpage() == FL_PAGE) {
        const char *t = "***** Sorting ******";
        ascput(2, int(std::char_traits<char>::length(t)), t);
        asrefresh();
    }
    comparer cmp{lv.sort & 3, (lv.sort & FL_REVERSED) != 0};
    std::vector<sortkey> keys(l.count());
    for (size_t i = 0; i < l.count(); i++)
        keys[i] = key_of(l, i, cmp.key);
    l.order.resize(l.count());
    for (size_t i = 0; i < l.count(); i++)
        l.order[i] = int32_t(i);
    std::sort(l.order.begin(), l.order.end(),
              [&](int32_t a, int32_t b) { return cmp.before(keys[size_t(a)], a, keys[size_t(b)], b); });
    lv.rebuild = true;
}

void fl_sort_insert(fl_level &lv, int32_t i)
{
    fl_list &l = lv.list;
    comparer cmp{lv.sort & 3, (lv.sort & FL_REVERSED) != 0};
    sortkey ki = key_of(l, size_t(i), cmp.key);
    auto at = std::lower_bound(l.order.begin(), l.order.end(), i, [&](int32_t a, int32_t) {
        return cmp.before(key_of(l, size_t(a), cmp.key), a, ki, i);
    });
    l.order.insert(at, i);
    lv.rebuild = true;
}

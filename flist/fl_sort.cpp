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

// An entry as the sort sees it: one number that settles most comparisons,
// and where its name lies for the few it does not. Small and kept by value,
// so that sorting many entries stays in the processor's cache.
struct ranked {
    uint64_t major;    // the size or time, or eight bytes of the first text
    int32_t index;     // the entry
    uint16_t stem_at;  // where the stem starts in the entry's path
    uint16_t stem_len; // its length; the extension runs to the end
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

ranked rank_of(const fl_list &l, size_t i, int key)
{
    const fl_status &s = l.st[i];
    std::string_view whole(l.name[i]);
    size_t slash = whole.rfind('/');
    size_t at = slash == std::string_view::npos ? 0 : slash + 1;
    std::string_view stem, ext;
    fl_split(whole.substr(at), stem, ext);
    ranked r{0, int32_t(i), uint16_t(std::min<size_t>(at, UINT16_MAX)),
             uint16_t(std::min<size_t>(stem.size(), UINT16_MAX))};
    if (key == FL_BYSIZE || key == FL_BYTIME) {
        // Directories show no size, and sort as empty.
        int64_t v = key == FL_BYTIME ? (s.mtime ? s.mtime : s.ctime ? s.ctime : s.atime)
                                     : fl_is_dir(s) ? 0 : s.size;
        r.major = uint64_t(v) ^ (uint64_t(1) << 63); // signed order as unsigned
    } else {
        r.major = head_of(key == FL_BYTYPE ? ext : stem);
    }
    return r;
}

struct comparer {
    const fl_list &l;
    int key;              // sort code without the reversal
    bool reversed;
    std::string_view stem(const ranked &r) const
    {
        return std::string_view(l.name[size_t(r.index)]).substr(r.stem_at, r.stem_len);
    }
    std::string_view ext(const ranked &r) const
    {
        return std::string_view(l.name[size_t(r.index)]).substr(size_t(r.stem_at) + r.stem_len);
    }
    // Past the first number: the type sort looks at the extension, then the
    // stem; the others at the stem, then the extension. Equal sizes or
    // times thus go by name, and the order does not depend on the order
    // the directory gives its names in.
    int rest(const ranked &a, const ranked &b) const
    {
        bool type = key == FL_BYTYPE;
        int c = type ? padded(ext(a), ext(b)) : padded(stem(a), stem(b));
        return c ? c : type ? padded(stem(a), stem(b)) : padded(ext(a), ext(b));
    }
    bool operator()(const ranked &a, const ranked &b) const
    {
        int c = a.major != b.major ? (a.major < b.major ? -1 : 1) : rest(a, b);
        if (reversed)
            c = -c;
        return c ? c < 0 : a.index < b.index;
    }
};

} // namespace

void fl_sort(fl_level &lv)
{
    fl_list &l = lv.list;
    if (fs_curpage() == FL_PAGE) {
        const char *t = "***** Sorting ******";
        ascput(2, int(std::char_traits<char>::length(t)), t);
        asrefresh();
    }
    comparer cmp{l, lv.sort & 3, (lv.sort & FL_REVERSED) != 0};
    // `..` comes first whatever the order; the rest is sorted.
    l.order.clear();
    std::vector<ranked> rest;
    rest.reserve(l.count());
    for (size_t i = 0; i < l.count(); i++) {
        if (fl_is_parent(l, i))
            l.order.push_back(int32_t(i));
        else
            rest.push_back(rank_of(l, i, cmp.key));
    }
    std::sort(rest.begin(), rest.end(), cmp);
    for (const ranked &r : rest)
        l.order.push_back(r.index);
    lv.rebuild = true;
}

void fl_resort(fl_level &lv, int code)
{
    // What was typed on the lines goes with its entry, wherever it moves.
    fl_fetch(lv);
    lv.sort = code;
    fl_sort(lv);
}

void fl_sort_insert(fl_level &lv, int32_t i)
{
    fl_list &l = lv.list;
    comparer cmp{l, lv.sort & 3, (lv.sort & FL_REVERSED) != 0};
    auto at = l.order.begin();
    if (!fl_is_parent(l, size_t(i))) {
        ranked ri = rank_of(l, size_t(i), cmp.key);
        at = std::lower_bound(l.order.begin(), l.order.end(), i, [&](int32_t a, int32_t) {
            return fl_is_parent(l, size_t(a)) || cmp(rank_of(l, size_t(a), cmp.key), ri);
        });
    }
    l.order.insert(at, i);
    lv.rebuild = true;
}

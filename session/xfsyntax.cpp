// The editor's side of syntax colouring: the rule file read at start and by
// SYNTax, the block chosen for each file, and the colours of the rows the
// page shows, one a column.
#include "session/xed.h"
#include "commands/commands.h"

#include <sys/stat.h>

int syntax_global = 1;

namespace {

struct file_lines : syn_lines {
    int32_t count() const override { return xf->nbli(); }
    std::string_view line(int32_t i) const override
    {
        const xfline &l = xf->lines[i];
        return std::string_view(l.text, (size_t)l.len);
    }
};

bool readable(const std::string &p)
{
    struct stat st;
    return stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// The block for the current file, worked out again when it is stale.
const syn_block *block()
{
    if (!syntax_global || xf->synstale == 0 || xf->bin || xf->nbli() == 0)
        return nullptr;
    if (xf->synstale < 0) {
        const xfline &first = xf->lines[0];
        int b = syn_choose(xf->fname, std::string_view(first.text, (size_t)first.len), false,
                           xf->case_mode == 0 || xf->case_mode == 2);
        if (b != xf->synblock)
            xf->syn.reset();
        xf->synblock = b;
        xf->synstale = 1;
    }
    return xf->synblock >= 0 && xf->synblock < (int)syn_table.size() ? &syn_table[(size_t)xf->synblock]
                                                                      : nullptr;
}

} // namespace

bool xfsyn_colours(int32_t li, int32_t col0, int width, std::vector<int8_t> &out)
{
    const syn_block *b = block();
    if (!b)
        return false;
    static std::vector<uint8_t> bytes;
    if (!xf->syn.colours(*b, file_lines(), li, bytes))
        return false;
    // One colour a column: that of the character's first byte.
    const xfline &l = xf->lines[li];
    out.assign((size_t)width, -1);
    int32_t off = xfcol_off(l.text, l.len, col0, xf->utf8);
    for (int k = 0; k < width && off < l.len; k++) {
        uint8_t c = bytes[(size_t)off];
        out[(size_t)k] = c == SYN_NONE ? -1 : (int8_t)c;
        xfcol_char(l.text, l.len, off, off, xf->utf8);
    }
    return true;
}

bool xfsyn_inert(int32_t li, std::vector<uint8_t> &mask)
{
    const syn_block *b = block();
    if (!b)
        return false;
    static std::vector<uint8_t> bytes;
    if (!xf->syn.colours(*b, file_lines(), li, bytes))
        return false;
    mask.assign(bytes.size(), 0);
    for (size_t k = 0; k < bytes.size(); k++) {
        int c = bytes[k];
        mask[k] = c != SYN_NONE && ((b->comment_colour && c == b->comment_colour) ||
                                    (b->string_colour && c == b->string_colour));
    }
    return true;
}

void xfsyn_changed(int32_t li) { xf->syn.changed(li); }

void xfsyn_all_stale()
{
    for (xfile *f : files) {
        f->syn.reset();
        if (f->synstale != 0)
            f->synstale = -1;
    }
}

int xfsyn_load(const std::string &path, std::string &err, int &line)
{
    int r = syn_load(path, err, line);
    xfsyn_all_stale();
    return r;
}

void xfsyn_defaults()
{
    // The user's own rules win over those shipped beside the program (found
    // from the build folder too).
    const std::string tries[] = {xfuser_data() + "syntax.rules", installdir + "share/vorta/syntax.rules",
                                 installdir + "../share/vorta/syntax.rules"};
    for (const std::string &t : tries) {
        if (!readable(t))
            continue;
        std::string err;
        int line;
        if (xfsyn_load(t, err, line) != 0)
            xfmsgs(err, 1);
        return;
    }
}

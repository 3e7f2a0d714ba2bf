// The editor's side of syntax colouring: the rule file read at start and by
// SYNTax, the block chosen for each file, and the colours of the rows the
// page shows, one a column.
#include "session/xed.h"
#include "commands/commands.h"
#include "fields/fields.h"

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

// make's own file names carry no extension: they take the rules of .mk.
std::string rule_name(const std::string &fname)
{
    static const char *const make_names[] = {"Makefile", "makefile", "GNUmakefile"};
    size_t slash = fname.rfind('/');
    std::string_view base = std::string_view(fname).substr(slash == std::string::npos ? 0 : slash + 1);
    for (const char *n : make_names)
        if (base == n)
            return fname + ".mk";
    return fname;
}

// The block for the current file, worked out again when it is stale.
const syn_block *block()
{
    if (!syntax_global || xf->synstale == 0 || xf->bin || xf->nbli() == 0)
        return nullptr;
    if (xf->synstale < 0) {
        const xfline &first = xf->lines[0];
        int b = syn_choose(rule_name(xf->fname), std::string_view(first.text, (size_t)first.len), false,
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

namespace {

// One colour a column from column col0: that of the character's first byte.
void by_column(const char *text, int32_t len, const uint8_t *bytes, int32_t col0, int width,
               std::vector<int8_t> &out)
{
    out.assign((size_t)width, -1);
    int32_t off = xfcol_off(text, len, col0, xf->utf8);
    for (int k = 0; k < width && off < len; k++) {
        uint8_t c = bytes[off];
        out[(size_t)k] = c == SYN_NONE ? -1 : (int8_t)c;
        xfcol_char(text, len, off, off, xf->utf8);
    }
}

} // namespace

namespace {

// The colour bytes of line li of the current file and its block, or null
// when the file is not coloured. The bytes stay until the next call.
const syn_block *line_bytes(int32_t li, const std::vector<uint8_t> *&out)
{
    static std::vector<uint8_t> bytes;
    const syn_block *b = block();
    if (!b || !xf->syn.colours(*b, file_lines(), li, bytes))
        return nullptr;
    out = &bytes;
    return b;
}

} // namespace

bool xfsyn_colours(int32_t li, int32_t col0, int width, std::vector<int8_t> &out)
{
    const std::vector<uint8_t> *bytes;
    if (!line_bytes(li, bytes))
        return false;
    const xfline &l = xf->lines[li];
    by_column(l.text, l.len, bytes->data(), col0, width, out);
    return true;
}

int xfsyn_typed(const char *, int, intptr_t view, int row, int, int)
{
    if (view != xvidx || !xf || row < 0 || (size_t)row >= xv->rows.size())
        return 1;
    const xview::rowmap m = xv->rows[(size_t)row];
    const syn_block *b = block();
    if (!b || m.li < 0 || m.li >= nbli() || !m.fld)
        return 0;
    std::string now = xfrow_line(m, xffield_text(m.fld, true, xf->utf8 != 0));
    syn_state start = xf->syn.state_at(*b, file_lines(), m.li);
    const xfline &l = xf->lines[m.li];
    syn_state before = syn_line(*b, l.text, l.len, start, nullptr);
    static std::vector<uint8_t> bytes;
    bytes.resize(now.size());
    syn_state after = syn_line(*b, now.data(), (int32_t)now.size(), start, bytes.data());
    if (!(before == after))
        return 1; // the lines below change colour too
    std::vector<int8_t> cols;
    by_column(now.data(), (int32_t)now.size(), bytes.data(), m.col0, m.len, cols);
    asccol(m.fld, (int)cols.size(), cols.data());
    return 0;
}

bool xfsyn_inert(int32_t li, std::vector<uint8_t> &mask)
{
    const std::vector<uint8_t> *bytes;
    const syn_block *b = line_bytes(li, bytes);
    if (!b)
        return false;
    mask.assign(bytes->size(), 0);
    for (size_t k = 0; k < bytes->size(); k++) {
        int c = (*bytes)[k];
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

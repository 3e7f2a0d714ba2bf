// A small writer of PDF documents from lines of text: what printing falls
// back on when no printer is set up. Pages are A4 in the PDF's own Courier,
// so no font is embedded; a long line wraps, a form feed starts a new page,
// tabs stop every eight columns. The document holds no date, so the same
// text always gives the same bytes.
#include "platform/platform.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace {

constexpr int page_w = 595, page_h = 842; // A4 in points
constexpr int margin = 36;                // half an inch all round
constexpr int font_pt = 10, lead = 12;    // Courier 10 on 12
constexpr int cols = (page_w - 2 * margin) * 10 / (font_pt * 6); // a Courier cell is 0.6 em
constexpr int rows = (page_h - 2 * margin) / lead;

// One code point of UTF-8 (a stray byte stands for itself, as Latin-1).
uint32_t next_char(const std::string &s, size_t &i)
{
    unsigned char c = (unsigned char)s[i];
    int n = c >= 0xF0 && c < 0xF8 ? 3 : c >= 0xE0 && c < 0xF0 ? 2 : c >= 0xC0 && c < 0xE0 ? 1 : 0;
    if (n == 0 || i + (size_t)n >= s.size()) {
        i++;
        return c;
    }
    uint32_t cp = c & (0x3Fu >> n);
    for (int k = 1; k <= n; k++) {
        unsigned char d = (unsigned char)s[i + (size_t)k];
        if ((d & 0xC0) != 0x80) {
            i++;
            return c;
        }
        cp = (cp << 6) | (d & 0x3F);
    }
    i += (size_t)n + 1;
    return cp;
}

// The line as cells of the page's encoding (WinAnsi, Latin-1 in its upper
// half): what it cannot show becomes '?'.
std::string cells(const std::string &line, bool utf8)
{
    std::string out;
    for (size_t i = 0; i < line.size();) {
        uint32_t cp = utf8 ? next_char(line, i) : (unsigned char)line[i++];
        if (cp == '\t') {
            out.append(8 - out.size() % 8, ' ');
        } else if (cp < 32 || cp == 127 || (cp >= 128 && cp < 160)) {
            out += '.';
        } else {
            out += cp < 256 ? (char)cp : '?';
        }
    }
    return out;
}

std::string pdf_string(const std::string &s)
{
    std::string o = "(";
    for (char c : s) {
        if (c == '(' || c == ')' || c == '\\')
            o += '\\';
        o += c;
    }
    return o + ")";
}

} // namespace

std::string pl_text_pdf(const std::vector<std::string> &lines, const std::string &title, bool utf8)
{
    // Lay the text out in pages of rows.
    std::vector<std::vector<std::string>> pages(1);
    for (const std::string &l : lines) {
        std::string rest = l;
        while (true) {
            size_t ff = rest.find('\f');
            std::string part = cells(rest.substr(0, ff), utf8);
            do {
                if ((int)pages.back().size() == rows)
                    pages.emplace_back();
                pages.back().push_back(part.substr(0, (size_t)cols));
                part.erase(0, std::min(part.size(), (size_t)cols));
            } while (!part.empty());
            if (ff == std::string::npos)
                break;
            pages.emplace_back();
            rest.erase(0, ff + 1);
        }
    }
    std::string pdf = "%PDF-1.4\n%\xe2\xe3\xcf\xd3\n";
    std::vector<size_t> offsets;
    auto object = [&](const std::string &body) {
        offsets.push_back(pdf.size());
        pdf += std::to_string(offsets.size()) + " 0 obj\n" + body + "\nendobj\n";
    };
    size_t n = pages.size();
    // Objects: 1 catalog, 2 page tree, 3 font, 4 information, then a page
    // and its contents for each page.
    object("<< /Type /Catalog /Pages 2 0 R >>");
    std::string kids;
    for (size_t p = 0; p < n; p++)
        kids += (p ? " " : "") + std::to_string(5 + 2 * p) + " 0 R";
    object("<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(n) + " >>");
    object("<< /Type /Font /Subtype /Type1 /BaseFont /Courier /Encoding /WinAnsiEncoding >>");
    object("<< /Title " + pdf_string(cells(title, utf8)) + " /Producer (xed) >>");
    for (size_t p = 0; p < n; p++) {
        object("<< /Type /Page /Parent 2 0 R /MediaBox [0 0 " + std::to_string(page_w) + " " +
               std::to_string(page_h) + "] /Resources << /Font << /F1 3 0 R >> >> /Contents " +
               std::to_string(6 + 2 * p) + " 0 R >>");
        std::string s = "BT\n/F1 " + std::to_string(font_pt) + " Tf\n" + std::to_string(lead) + " TL\n" +
                        std::to_string(margin) + " " + std::to_string(page_h - margin - font_pt) + " Td\n";
        for (const std::string &row : pages[p])
            s += pdf_string(row) + " Tj T*\n";
        s += "ET";
        object("<< /Length " + std::to_string(s.size()) + " >>\nstream\n" + s + "\nendstream");
    }
    size_t xref = pdf.size();
    pdf += "xref\n0 " + std::to_string(offsets.size() + 1) + "\n0000000000 65535 f \n";
    for (size_t off : offsets) {
        char row[24];
        std::snprintf(row, sizeof row, "%010zu 00000 n \n", off);
        pdf += row;
    }
    pdf += "trailer\n<< /Size " + std::to_string(offsets.size() + 1) + " /Root 1 0 R /Info 4 0 R >>\nstartxref\n" +
           std::to_string(xref) + "\n%%EOF\n";
    return pdf;
}

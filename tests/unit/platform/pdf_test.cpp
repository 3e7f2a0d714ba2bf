// The PDF writer printing falls back on: a document whose cross-reference
// table points at its objects, whose pages hold the text as written (wrapped,
// paged, escaped, in the page's encoding), and that is the same for the same
// text.
#include "platform/platform.h"

#include <gtest/gtest.h>

namespace {

// The text rows drawn on each page: the (...) strings before Tj, unescaped.
std::vector<std::vector<std::string>> pages_of(const std::string &pdf)
{
    std::vector<std::vector<std::string>> pages;
    size_t at = 0;
    while ((at = pdf.find("stream\nBT", at)) != std::string::npos) {
        size_t end = pdf.find("ET\nendstream", at);
        std::vector<std::string> rows;
        for (size_t p = pdf.find('(', at); p != std::string::npos && p < end; p = pdf.find("\n(", p) + 1) {
            std::string s;
            size_t i = p + 1;
            for (; pdf[i] != ')'; i++) {
                if (pdf[i] == '\\')
                    i++;
                s += pdf[i];
            }
            rows.push_back(s);
            if (pdf.compare(i, 5, ") Tj ") != 0)
                ADD_FAILURE() << "row not drawn with Tj";
            if (pdf.find("\n(", p) == std::string::npos)
                break;
        }
        pages.push_back(rows);
        at = end;
    }
    return pages;
}

TEST(TextPdf, CrossReferencesPointAtTheirObjects)
{
    std::string pdf = pl_text_pdf({"hello", "world"}, "t.txt", true);
    ASSERT_EQ(pdf.rfind("%PDF-1.4\n", 0), 0u);
    size_t sx = pdf.rfind("startxref\n");
    ASSERT_NE(sx, std::string::npos);
    size_t xref = std::stoul(pdf.substr(sx + 10));
    ASSERT_EQ(pdf.compare(xref, 5, "xref\n"), 0);
    std::string tail = pdf.substr(xref);
    ASSERT_EQ(tail.compare(0, 7, "xref\n0 "), 0);
    size_t eol = tail.find('\n', 7);
    ASSERT_NE(eol, std::string::npos);
    int n = std::stoi(tail.substr(7, eol - 7));
    size_t head_len = eol + 1; // "xref\n0 N\n"
    EXPECT_EQ(n, 7); // catalog, pages, font, info, one page and its contents, and entry 0
    for (int i = 1; i < n; i++) {
        size_t off = std::stoul(tail.substr(head_len + 20 * (size_t)i, 10));
        std::string head = std::to_string(i) + " 0 obj\n";
        EXPECT_EQ(pdf.compare(off, head.size(), head), 0) << "object " << i;
    }
    // Each stream's length is its own.
    size_t s = pdf.find("/Length ");
    size_t len = std::stoul(pdf.substr(s + 8));
    size_t body = pdf.find("stream\n", s) + 7;
    EXPECT_EQ(pdf.compare(body + len, 10, "\nendstream"), 0);
    EXPECT_NE(pdf.find("/Title (t.txt)"), std::string::npos);
}

TEST(TextPdf, RowsWrapPagesBreakAndSpecialCharactersAreEscaped)
{
    std::vector<std::string> lines = {"a (paren) and \\ back", std::string(100, 'x'), "tab\there"};
    for (int i = 0; i < 70; i++)
        lines.push_back("line " + std::to_string(i));
    lines.push_back("before\fafter");
    auto pages = pages_of(pl_text_pdf(lines, "t", true));
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_EQ(pages[0][0], "a (paren) and \\ back");
    EXPECT_EQ(pages[0][1], std::string(87, 'x'));
    EXPECT_EQ(pages[0][2], std::string(13, 'x'));
    EXPECT_EQ(pages[0][3], "tab     here");
    EXPECT_EQ(pages[0].size(), 64u);
    EXPECT_EQ(pages[1].front(), "line 60");
    EXPECT_EQ(pages[1].back(), "before");
    EXPECT_EQ(pages[2], (std::vector<std::string>{"after"}));
}

TEST(TextPdf, CharactersGoToThePageEncodingOrAQuestionMark)
{
    auto u = pages_of(pl_text_pdf({"caf\xc3\xa9 \xe2\x82\xac \xff"}, "t", true));
    ASSERT_EQ(u.size(), 1u);
    EXPECT_EQ(u[0][0], "caf\xe9 ? \xff"); // a stray byte stands for itself
    auto b = pages_of(pl_text_pdf({"caf\xe9\x01"}, "t", false));
    EXPECT_EQ(b[0][0], "caf\xe9.");
}

TEST(TextPdf, SameTextSameBytesAndAnEmptyTextIsOneEmptyPage)
{
    EXPECT_EQ(pl_text_pdf({"x"}, "t", true), pl_text_pdf({"x"}, "t", true));
    std::string empty = pl_text_pdf({}, "t", true);
    EXPECT_NE(empty.find("/Count 1"), std::string::npos);
    EXPECT_EQ(pages_of(empty).size(), 1u);
}

} // namespace

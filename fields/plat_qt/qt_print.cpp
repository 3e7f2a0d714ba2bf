// Printing in the window: the PDF of a text or of the page is drawn by the
// toolkit, so the page keeps its colours and the text its font, rather than
// the plain writer's Courier.
#include "fields/plat_qt/qt_window.h"

#include <QBuffer>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

namespace {

// A writer on `out`, A4 upright with 15 mm margins.
void setup(QPdfWriter &w, const std::string &title)
{
    w.setTitle(QString::fromStdString(title));
    w.setCreator(QStringLiteral("xed"));
    w.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(15, 15, 15, 15)));
    w.setResolution(300);
}

} // namespace

std::string qtplat::pdf(const std::vector<std::string> *lines, const std::string &title)
{
    QByteArray bytes;
    QBuffer out(&bytes);
    if (!out.open(QIODevice::WriteOnly))
        return "";
    {
        QPdfWriter w(&out);
        setup(w, title);
        QPainter p;
        if (!p.begin(&w))
            return "";
        QRect page = w.pageLayout().paintRectPixels(w.resolution());
        page.moveTo(0, 0);
        if (!lines) {
            // The page as shown, scaled to the paper's width.
            QImage shot = img_;
            if (shot.isNull())
                return "";
            QSize fit = shot.size().scaled(page.size(), Qt::KeepAspectRatio);
            p.drawImage(QRect(QPoint(0, 0), fit), shot);
        } else {
            // The text font at 10 points; long lines wrap, a form feed
            // starts a page.
            QFont f = font_;
            f.setPointSizeF(10);
            p.setFont(f);
            QFontMetrics m(f, &w);
            int lh = m.lineSpacing();
            int per = std::max(1, page.width() / std::max(1, m.horizontalAdvance(QLatin1Char('M'))));
            int y = m.ascent();
            for (const std::string &raw : *lines) {
                std::string l = raw;
                if (!l.empty() && l[0] == '\f') {
                    l.erase(0, 1);
                    if (y > m.ascent()) {
                        w.newPage();
                        y = m.ascent();
                    }
                }
                QString text = QString::fromUtf8(l.data(), (qsizetype)l.size());
                do {
                    if (y > page.height()) {
                        w.newPage();
                        y = m.ascent();
                    }
                    p.drawText(0, y, text.left(per));
                    text.remove(0, per);
                    y += lh;
                } while (!text.isEmpty());
            }
        }
        p.end();
    }
    return std::string(bytes.constData(), (size_t)bytes.size());
}

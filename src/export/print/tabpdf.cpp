#include "tabpdf.h"

#include "export/exportlog.h"
#include "export/tabviewprintrenderer.h"
#include "surfacefonts.h"
#include "tabrowwithmarkupviewitem.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextDocument>

#include <memory>

namespace {

QFont titleFont()
{
    QFont font(u"DejaVu Sans"_qs);
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(24);
    return font;
}

QFont introFont()
{
    QFont font(u"DejaVu Sans"_qs);
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(15);
    return font;
}

QFont footerFont()
{
    QFont font(u"DejaVu Serif"_qs);
    font.setStyleHint(QFont::Serif);
    font.setBold(true);
    font.setItalic(true);
    font.setPointSizeF(11.9);
    return font;
}

// The intro as laid out on the page, with web and mail addresses as links: the PDF engine
// turns a laid-out anchor into a link a reader can follow.
std::unique_ptr<QTextDocument> introDocument(const QString &intro, double width,
                                             QPaintDevice *device)
{
    static const QRegularExpression address(
        u"(https?://[^\\s<>\"]+[^\\s<>\".,;:!?)]|www\\.[^\\s<>\"]+[^\\s<>\".,;:!?)]"
        u"|[\\w.+-]+@[\\w-]+(\\.[\\w-]+)+)"_qs);
    QString html;
    qsizetype at = 0;
    for (auto it = address.globalMatch(intro); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        html += intro.mid(at, match.capturedStart() - at).toHtmlEscaped();
        const QString text = match.captured();
        const QString href = text.contains(u'@') && !text.contains(u"://"_qs)
                                 ? u"mailto:"_qs + text
                                 : (text.startsWith(u"www."_qs) ? u"https://"_qs + text : text);
        html += u"<a style=\"color:#000000\" href=\""_qs + href.toHtmlEscaped() + u"\">"_qs +
                text.toHtmlEscaped() + u"</a>"_qs;
        at = match.capturedEnd();
    }
    html += intro.mid(at).toHtmlEscaped();
    html.replace(u'\n', u"<br>"_qs);

    auto document = std::make_unique<QTextDocument>();
    document->documentLayout()->setPaintDevice(device);
    document->setDefaultFont(introFont());
    document->setDocumentMargin(0);
    document->setDefaultStyleSheet(u"body { color: #000000; }"_qs);
    document->setHtml(u"<body>"_qs + html + u"</body>"_qs);
    document->setTextWidth(width);
    return document;
}

// Real metrics; the title is measured on one line, as pagination wants it.
class FontMeasurer : public PrintTextMeasurer {
public:
    explicit FontMeasurer(QPaintDevice *device) : device(device) {}
    double titleHeight(const QString &) const override
    {
        return QFontMetricsF(titleFont(), device).height();
    }
    double introHeight(const QString &intro, double width) const override
    {
        return introDocument(intro, width, device)->size().height();
    }

private:
    QPaintDevice *device;
};

// Letter pages, no margins, one unit a point.
void preparePdfWriter(QPdfWriter &writer, const QString &title)
{
    writer.setResolution(72);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                                     QMarginsF(0, 0, 0, 0), QPageLayout::Point));
    writer.setTitle(title);
    writer.setCreator(u"Lutegrid"_qs);
}

// A well-formed PDF with an empty page tree.
QByteArray emptyPdf()
{
    QByteArray pdf("%PDF-1.4\n");
    const QList<QByteArray> objects{"<< /Type /Catalog /Pages 2 0 R >>",
                                    "<< /Type /Pages /Kids [] /Count 0 >>"};
    QList<qsizetype> offsets;
    for (qsizetype i = 0; i < objects.size(); ++i) {
        offsets.append(pdf.size());
        pdf += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const qsizetype xref = pdf.size();
    pdf += "xref\n0 " + QByteArray::number(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (qsizetype offset : offsets)
        pdf += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    pdf += "trailer\n<< /Size " + QByteArray::number(objects.size() + 1) +
           " /Root 1 0 R >>\nstartxref\n" + QByteArray::number(xref) + "\n%%EOF\n";
    return pdf;
}

} // namespace

namespace TabPdf {

void drawPage(QPainter &painter, TabViewPrintRenderer &renderer, int page)
{
    const TabViewPrintRenderer::PageLayout layout = renderer.pageLayout(page);
    painter.save();
    painter.fillRect(TabViewPrintRenderer::paperRect, Qt::white);
    painter.setPen(Qt::black);
    const TabData &tab = renderer.tabExportConfig.tabData;
    if (layout.titleRect) {
        painter.setFont(titleFont());
        // At most two lines; a long title may run into the gap below, as measured.
        painter.drawText(layout.titleRect->adjusted(0, 0, 0, layout.titleRect->height()),
                         Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, tab.title);
    }
    if (layout.introRect && tab.introText) {
        const auto intro =
            introDocument(*tab.introText, layout.introRect->width(), painter.device());
        painter.save();
        painter.translate(layout.introRect->topLeft());
        QAbstractTextDocumentLayout::PaintContext context;
        context.palette.setColor(QPalette::Text, Qt::black);
        context.clip = QRectF(QPointF(0, 0), layout.introRect->size());
        intro->documentLayout()->draw(&painter, context);
        painter.restore();
    }
    const double bottom = TabViewPrintRenderer::printableRect.bottom();
    for (const TabViewPrintRenderer::PlacedRow &placed : layout.rows) {
        painter.save();
        painter.translate(placed.frame.topLeft());
        // Only a row taller than the page gets here too tall: it is shrunk to the room left.
        const double room = bottom - placed.frame.top();
        if (placed.row.height > room && room > 0)
            painter.scale(room / placed.row.height, room / placed.row.height);
        for (int i = 0; i < placed.row.views.size(); ++i)
            TabRowWithMarkupViewItem::paintRow(painter, placed.row.views[i], placed.row.frames[i],
                                               true, -1);
        painter.restore();
    }
    painter.setPen(Qt::black);
    painter.setFont(footerFont());
    painter.drawText(layout.footerRect, Qt::AlignCenter, u"Lutegrid"_qs);
    painter.restore();
}

std::optional<QByteArray> pdfData(const TabExportConfiguration &configuration)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        preparePdfWriter(writer, configuration.tabData.title);
        FontMeasurer measurer(&writer);
        TabViewPrintRenderer renderer(configuration, measurer);
        const int pages = renderer.numberOfPages();
        QPainter painter;
        if (pages > 0) {
            if (!painter.begin(&writer)) {
                qCWarning(lcExport) << "cannot start the PDF";
                return std::nullopt;
            }
            for (int page = 0; page < pages; ++page) {
                if (page > 0 && !writer.newPage())
                    return std::nullopt;
                drawPage(painter, renderer, page);
            }
            painter.end();
        } else {
            // A tab without rows makes a PDF of no pages, which QPdfWriter won't write.
            return emptyPdf();
        }
    }
    return bytes;
}

bool writePdf(const TabExportConfiguration &configuration, const QString &path)
{
    const auto bytes = pdfData(configuration);
    if (!bytes)
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size() || !file.commit()) {
        qCWarning(lcExport) << "cannot write" << path << file.errorString();
        return false;
    }
    return true;
}

std::optional<QString> exportToPath(ExportType type, const TabExportConfiguration &configuration,
                                    const QString &path)
{
    if (type == ExportType::PDF)
        return writePdf(configuration, path) ? std::optional<QString>(path) : std::nullopt;
    return DocumentManager::exportToPath(type, configuration, path);
}

} // namespace TabPdf

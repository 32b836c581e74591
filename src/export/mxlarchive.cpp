#include "mxlarchive.h"

#include "exportlog.h"

#include <QXmlStreamReader>

#include <zip.h>

#include <memory>

namespace {

const QByteArray mimeType = "application/vnd.recordare.musicxml";
const QString scoreName = u"score.musicxml"_qs;

struct ArchiveCloser {
    void operator()(zip_t *archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, ArchiveCloser>;

bool addEntry(zip_t *archive, const char *name, const QByteArray &data, bool store)
{
    zip_source_t *source = zip_source_buffer(archive, data.constData(), zip_uint64_t(data.size()), 0);
    if (!source)
        return false;
    const zip_int64_t index = zip_file_add(archive, name, source, ZIP_FL_ENC_UTF_8);
    if (index < 0) {
        zip_source_free(source);
        return false;
    }
    return !store || zip_set_file_compression(archive, zip_uint64_t(index), ZIP_CM_STORE, 0) == 0;
}

std::optional<QByteArray> readEntry(zip_t *archive, const QString &name, QString *message)
{
    zip_stat_t stat;
    zip_stat_init(&stat);
    const QByteArray utf8 = name.toUtf8();
    if (zip_stat(archive, utf8.constData(), 0, &stat) != 0 || !(stat.valid & ZIP_STAT_SIZE)) {
        *message = u"the archive has no entry "_qs + name;
        return std::nullopt;
    }
    if (stat.size > zip_uint64_t(MxlArchive::maximumScoreBytes)) {
        *message = u"the score in the archive is too large"_qs;
        return std::nullopt;
    }
    zip_file_t *file = zip_fopen(archive, utf8.constData(), 0);
    if (!file) {
        *message = u"the archive's score can't be opened"_qs;
        return std::nullopt;
    }
    QByteArray data(qsizetype(stat.size), Qt::Uninitialized);
    const zip_int64_t read = zip_fread(file, data.data(), stat.size);
    zip_fclose(file);
    if (read < 0 || zip_uint64_t(read) != stat.size) {
        *message = u"the archive is damaged"_qs;
        return std::nullopt;
    }
    return data;
}

// The first rootfile's path in META-INF/container.xml.
QString rootFile(const QByteArray &container)
{
    QXmlStreamReader xml(container);
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == u"rootfile")
            return xml.attributes().value(u"full-path"_qs).toString();
    }
    return {};
}

} // namespace

bool MxlArchive::looksLikeArchive(const QByteArray &bytes)
{
    return bytes.startsWith("PK\x03\x04");
}

std::optional<QByteArray> MxlArchive::pack(const QByteArray &score)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *buffer = zip_source_buffer_create(nullptr, 0, 0, &error);
    if (!buffer)
        return std::nullopt;
    // The archive is written into the buffer on close; keep it past that to read it out.
    zip_source_keep(buffer);
    zip_t *archive = zip_open_from_source(buffer, ZIP_TRUNCATE, &error);
    if (!archive) {
        zip_source_free(buffer);
        return std::nullopt;
    }
    const QByteArray container =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<container>\n <rootfiles>\n"
        "  <rootfile full-path=\"" + scoreName.toUtf8() +
        "\" media-type=\"application/vnd.recordare.musicxml+xml\"/>\n </rootfiles>\n"
        "</container>\n";
    const bool added = addEntry(archive, "mimetype", mimeType, true)
                       && addEntry(archive, "META-INF/container.xml", container, false)
                       && addEntry(archive, scoreName.toUtf8().constData(), score, false);
    if (!added || zip_close(archive) != 0) {
        qCWarning(lcExport) << "cannot pack the score:" << zip_strerror(archive);
        zip_discard(archive);
        zip_source_free(buffer);
        return std::nullopt;
    }
    std::optional<QByteArray> bytes;
    if (zip_source_open(buffer) == 0) {
        zip_source_seek(buffer, 0, SEEK_END);
        const zip_int64_t size = zip_source_tell(buffer);
        zip_source_seek(buffer, 0, SEEK_SET);
        if (size >= 0) {
            QByteArray data(qsizetype(size), Qt::Uninitialized);
            if (zip_source_read(buffer, data.data(), zip_uint64_t(size)) == size)
                bytes = data;
        }
        zip_source_close(buffer);
    }
    zip_source_free(buffer);
    return bytes;
}

std::optional<QByteArray> MxlArchive::unpack(const QByteArray &bytes, QString *message)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source =
        zip_source_buffer_create(bytes.constData(), zip_uint64_t(bytes.size()), 0, &error);
    if (!source) {
        *message = u"the archive can't be read"_qs;
        return std::nullopt;
    }
    Archive archive(zip_open_from_source(source, ZIP_RDONLY, &error));
    if (!archive) {
        zip_source_free(source);
        *message = u"not a readable .mxl archive"_qs;
        return std::nullopt;
    }
    QString path;
    QString ignored;
    if (const auto container = readEntry(archive.get(), u"META-INF/container.xml"_qs, &ignored))
        path = rootFile(*container);
    if (path.isEmpty()) {
        const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
        for (zip_int64_t i = 0; i < count && path.isEmpty(); ++i) {
            const QString name = QString::fromUtf8(zip_get_name(archive.get(), zip_uint64_t(i), 0));
            if (!name.startsWith(u"META-INF/") &&
                (name.endsWith(u".musicxml") || name.endsWith(u".xml")))
                path = name;
        }
    }
    if (path.isEmpty()) {
        *message = u"the archive holds no score"_qs;
        return std::nullopt;
    }
    return readEntry(archive.get(), path, message);
}

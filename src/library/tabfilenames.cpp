#include "tabfilenames.h"

#include "fileversion.h"

namespace TabFileNames {

namespace {

constexpr QStringView tabMarker = u".lgrd";
constexpr QStringView placeholderSuffix = u".icloud";

} // namespace

QString plainName(QStringView fileName)
{
    const qsizetype at = fileName.indexOf(tabMarker);
    return (at < 0 ? fileName : fileName.left(at)).toString();
}

QString tabPathForEntry(QStringView entryName)
{
    if (!entryName.contains(placeholderSuffix))
        return entryName.toString();
    QStringView rest = entryName;
    const qsizetype dot = rest.indexOf(u'.');
    if (dot >= 0)
        rest = rest.mid(dot + 1);
    const qsizetype end = rest.indexOf(placeholderSuffix);
    return (end < 0 ? rest : rest.left(end)).toString();
}

bool isTemporaryName(QStringView name)
{
    // A bare "~" starts a tab's name as well as any other character: only the sync clients'
    // own markers count.
    static constexpr QStringView prefixes[] = {u"~syncthing~", u"~$",          u".~",
                                               u".#",          u".syncthing.", u".dropbox"};
    static constexpr QStringView suffixes[] = {u".tmp",      u".temp",       u".part", u".partial",
                                               u".filepart", u".crdownload", u".swp",  u"~"};
    for (QStringView prefix : prefixes) {
        if (name.startsWith(prefix))
            return true;
    }
    for (QStringView suffix : suffixes) {
        if (name.endsWith(suffix, Qt::CaseInsensitive))
            return true;
    }
    // Nextcloud downloads into ".Song.lgrdi.~1a2b3c" and renames when done.
    if (name.startsWith(u'.') && name.contains(u".~"))
        return true;
    return false;
}

bool isTabEntryName(QStringView name)
{
    if (!name.contains(tabMarker) || isTemporaryName(name))
        return false;
    if (name.startsWith(u'.')) {
        if (name.endsWith(placeholderSuffix)) {
            // The placeholder of a file not yet downloaded.
            const QString tabPath = tabPathForEntry(name);
            return !tabPath.isEmpty() && !tabPath.startsWith(u'.') && tabPath.contains(tabMarker) &&
                   !FileVersion::conflictCopyOrigin(tabPath);
        }
        // A hidden tab is still a tab. Copy tools write hidden files with a random tail
        // (".Song.lgrdi.Xb3k9q") while they work: those have no tab extension at the end.
        if (!name.endsWith(u".lgrdi") && !name.endsWith(u".lgrd"))
            return false;
    }
    return !FileVersion::conflictCopyOrigin(name);
}

} // namespace TabFileNames

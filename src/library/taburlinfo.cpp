#include "taburlinfo.h"

#include "tabfilenames.h"

#include <QCollator>

#include <algorithm>

QString TabUrlInfo::plainName() const
{
    return TabFileNames::plainName(tabPath);
}

void sortNewestFirst(QList<TabUrlInfo> &tabs)
{
    std::stable_sort(tabs.begin(), tabs.end(), [](const TabUrlInfo &a, const TabUrlInfo &b) {
        if (a.dateModified && b.dateModified)
            return *a.dateModified > *b.dateModified;
        return a.dateModified.has_value() && !b.dateModified.has_value();
    });
}

void sortAlphabetically(QList<TabUrlInfo> &tabs)
{
    QCollator collator;
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(tabs.begin(), tabs.end(), [&](const TabUrlInfo &a, const TabUrlInfo &b) {
        return collator.compare(a.plainName(), b.plainName()) < 0;
    });
}

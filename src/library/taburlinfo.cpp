#include "taburlinfo.h"

#include "tabfilenames.h"

#include <algorithm>

namespace {

// "Song 2" before "Song 10": runs of digits compare by value, the rest letter by letter
// without regard to case. The platform's collator can't be relied on for the numbers (it
// ignores numeric mode in the C locale).
int compareNatural(QStringView a, QStringView b)
{
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            qsizetype endA = i;
            qsizetype endB = j;
            while (endA < a.size() && a[endA].isDigit())
                ++endA;
            while (endB < b.size() && b[endB].isDigit())
                ++endB;
            qsizetype startA = i;
            qsizetype startB = j;
            while (startA + 1 < endA && a[startA].digitValue() == 0)
                ++startA;
            while (startB + 1 < endB && b[startB].digitValue() == 0)
                ++startB;
            const qsizetype lengthA = endA - startA;
            const qsizetype lengthB = endB - startB;
            if (lengthA != lengthB)
                return lengthA < lengthB ? -1 : 1;
            for (qsizetype k = 0; k < lengthA; ++k) {
                const int digitA = a[startA + k].digitValue();
                const int digitB = b[startB + k].digitValue();
                if (digitA != digitB)
                    return digitA < digitB ? -1 : 1;
            }
            i = endA;
            j = endB;
            continue;
        }
        const int order = QStringView(a.mid(i, 1)).compare(b.mid(j, 1), Qt::CaseInsensitive);
        if (order != 0)
            return order;
        ++i;
        ++j;
    }
    if (i < a.size() || j < b.size())
        return i < a.size() ? 1 : -1;
    return 0;
}

} // namespace

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
    std::stable_sort(tabs.begin(), tabs.end(), [](const TabUrlInfo &a, const TabUrlInfo &b) {
        return compareNatural(a.plainName(), b.plainName()) < 0;
    });
}

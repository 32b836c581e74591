#include "chordsearch.h"

#include <algorithm>

namespace ChordSearch {

namespace {

QString withoutSpaces(QString text)
{
    return text.remove(u' ');
}

struct Query {
    QString text;
    QString spaceless;
    QStringList words;

    explicit Query(const QString &typed)
        : text(typed.toLower()), spaceless(withoutSpaces(text)),
          words(text.split(u' ', Qt::SkipEmptyParts))
    {
    }
};

// The name spelt out, so that "a minor" or "c sharp" find "Am" and "C#".
QString expandedName(const QString &name)
{
    QString expanded;
    if (!name.contains(u'm'))
        expanded = name + u"major"_qs;
    else if (!name.contains(u"maj"))
        expanded = QString(name).replace(u"m"_qs, u"minor"_qs);
    else
        expanded = name;
    if (name.contains(u'#'))
        expanded += u"sharp"_qs;
    return expanded;
}

int scoreFor(const ChordShortcut &chord, const Query &query)
{
    const QString name = chord.name.toLower();
    const QString expanded = withoutSpaces(expandedName(name));
    int score = (query.text == name || name == query.spaceless || expanded == query.spaceless)
                    ? 1
                    : 0;
    for (const QString &word : query.words) {
        if (expanded.contains(word))
            ++score;
        if (name == word)
            ++score;
        if (name.startsWith(word))
            ++score;
        // One letter would lift every custom chord for any "c".
        if (word.size() >= 2 && u"custom"_qs.startsWith(word) && chord.isCustom)
            ++score;
    }
    return score;
}

} // namespace

int score(const ChordShortcut &chord, const QString &query)
{
    return scoreFor(chord, Query(query));
}

QList<ChordShortcut> search(const QList<ChordShortcut> &chords, const QString &query)
{
    const Query parsed(query);
    if (parsed.words.isEmpty())
        return {};
    QList<std::pair<int, const ChordShortcut *>> scored;
    for (const ChordShortcut &chord : chords) {
        const int points = scoreFor(chord, parsed);
        if (points >= 1)
            scored.append({points, &chord});
    }
    std::stable_sort(scored.begin(), scored.end(),
                     [](const auto &a, const auto &b) { return a.first > b.first; });
    QList<ChordShortcut> found;
    found.reserve(scored.size());
    for (const auto &entry : std::as_const(scored))
        found.append(*entry.second);
    return found;
}

QList<ChordShortcut> barSequence(const QList<ChordShortcut> &chords,
                                 const QList<RecentChord> &recents)
{
    QList<ChordShortcut> sequence;
    for (const RecentChord &recent : recents) {
        // The shape comes from this tuning's list: a recent chord of another tuning has none.
        const auto match = std::find_if(chords.cbegin(), chords.cend(), [&](const auto &chord) {
            return chord.name == recent.name && chord.isCustom == recent.isCustom;
        });
        if (match != chords.cend() && !sequence.contains(*match))
            sequence.append(*match);
    }
    const qsizetype recentCount = sequence.size();
    for (const ChordShortcut &chord : chords) {
        if (!sequence.first(recentCount).contains(chord))
            sequence.append(chord);
    }
    return sequence;
}

} // namespace ChordSearch

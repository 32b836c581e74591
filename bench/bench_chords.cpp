// Prints the time from a typed search character to the laid-out results of chord shortcut mode,
// with the most custom chords kept (50) and an eight-string tab, whose table is the largest (40
// chords), fitted string by string. The delay before a settled search is not counted: the
// figure starts when the search runs.
#include "benchutil.h"

#include "editor/tabeditviewcontroller.h"
#include "library/lutegriddocument.h"
#include "services/saveddata.h"

#include <QDir>

#include <cstdio>

int main(int argc, char *argv[])
{
    BenchEnvironment environment(argc, argv);
    SavedData &saved = SavedData::shared();
    for (int i = 0; i < saved.customChordLimit; ++i) {
        saved.saveCustomChord(ChordShortcut{
            u"Mine%1"_qs.arg(i), QList<ColumnItemType>(8, ColumnItemType::note(i % 12)), true});
    }
    const QString path = QDir(environment.home.path()).filePath(u"bench.lgrdi"_qs);
    TabData tab(u"bench"_qs, 8);
    tab.tabRowDatas.append(TabRowData(32, 8));
    {
        LutegridDocument created(path, tab);
        created.saveToURL(path, LutegridDocument::SaveOperation::ForCreating);
        created.close();
    }
    LutegridDocument document(path, std::nullopt);
    if (!document.open())
        return 1;
    TabEditViewController editor(&document);
    editor.applyViewSize(1280, 800);
    ChordShortcutMode &mode = *editor.chordShortcuts();
    editor.toggleChordShortcutMode();
    std::printf("chord search: %lld chords for 8 strings, %lld of them custom\n",
                static_cast<long long>(mode.chords().size()),
                static_cast<long long>(saved.customChordShortcuts->size()));

    const QStringList typed{u"a"_qs, u"am"_qs, u"a minor"_qs, u"custom"_qs, u"mine4"_qs,
                            u"c sharp"_qs};
    double slowest = 0.0;
    for (const QString &text : typed) {
        qsizetype shown = 0;
        const double time = bestOf(
            [&] {
                mode.searchChords(text);
                shown = mode.searchResultButtons.size();
            },
            50);
        char label[64];
        std::snprintf(label, sizeof label, "search \"%s\" (%lld shown)", qPrintable(text),
                      static_cast<long long>(shown));
        printFigure(label, time, "ms");
        slowest = std::max(slowest, time);
    }
    printFigure("search, slowest text (target 8)", slowest, "ms");
    // The bar is rebuilt after each chord taken from the results.
    printFigure("rebuildChordBar", bestOf([&] { mode.rebuildChordBar(); }, 50), "ms");
    editor.finishEditing();
    return 0;
}

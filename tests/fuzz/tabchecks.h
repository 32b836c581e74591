#pragma once

#include "fuzzcheck.h"
#include "model/tabfileformat.h"

#include <QDebug>

// Says which part of two tabs differs, so a finding explains itself.
inline void printDifference(const TabData &read, const TabData &expected)
{
    QString text;
    QDebug out(&text);
    out.noquote();
    out << "title" << (read.title == expected.title) << "notes" << read.stringNotes
        << expected.stringNotes << "capo" << read.capoFret << expected.capoFret << "tempo"
        << read.tempo << expected.tempo << "lyricSize" << read.lyricSize << expected.lyricSize
        << "intro" << read.introText.value_or(u"<none>"_qs)
        << expected.introText.value_or(u"<none>"_qs) << "playback"
        << (read.playbackOptions == expected.playbackOptions) << "rows"
        << read.tabRowDatas.size() << expected.tabRowDatas.size();
    for (qsizetype r = 0; r < qMin(read.tabRowDatas.size(), expected.tabRowDatas.size()); ++r) {
        const TabRowData &a = read.tabRowDatas[r];
        const TabRowData &b = expected.tabRowDatas[r];
        if (a == b)
            continue;
        out << "\nrow" << r << "strings" << a.stringCount << b.stringCount << "lyrics"
            << a.lyricLines << b.lyricLines << "selected" << a.selectedLyricLineIndex
            << b.selectedLyricLineIndex << "columns" << a.colDatas.size() << b.colDatas.size();
        for (qsizetype c = 0; c < qMin(a.colDatas.size(), b.colDatas.size()); ++c) {
            if (a.colDatas[c] == b.colDatas[c])
                continue;
            out << "\ncolumn" << c << a.colDatas[c].chordName.value_or(u"<none>"_qs)
                << b.colDatas[c].chordName.value_or(u"<none>"_qs);
            for (const auto &item : a.colDatas[c].columnItems)
                out << int(item.kind()) << item.fret();
            out << "|";
            for (const auto &item : b.colDatas[c].columnItems)
                out << int(item.kind()) << item.fret();
            break;
        }
        break;
    }
    std::fprintf(stderr, "%s\n", qPrintable(text));
}

// Like FUZZ_CHECK, for two tabs that should be equal.
#define FUZZ_CHECK_SAME_TAB(read, expected, promise)                                           \
    do {                                                                                       \
        if (!((read) == (expected))) {                                                         \
            printDifference(read, expected);                                                   \
            FUZZ_CHECK(false, promise);                                                        \
        }                                                                                      \
    } while (0)

// What every tab read from outside must allow: the program saves it as a document and exports
// it in the exchange form, and both read back to the same tab.
inline void checkTabSurvivesBothForms(const TabData &tab)
{
    FUZZ_CHECK(tabFitsDocument(tab), "a tab read fits in a document");
    const QByteArray document = documentData(tab);
    auto fromDocument = tabDataFromDocumentData(document);
    FUZZ_CHECK(fromDocument.has_value(), "a written document reads back");
    // The document form holds no title: the file's name is the tab's. Its reader cuts each
    // tuning entry to the first two characters ("F#3" reads as "F#"); an imported tab may
    // hold longer ones.
    fromDocument->title = tab.title;
    FUZZ_CHECK(fromDocument->stringNotes.size() == tab.stringNotes.size(),
               "a written document keeps its strings");
    for (qsizetype s = 0; s < tab.stringNotes.size(); ++s)
        FUZZ_CHECK(tab.stringNotes[s].startsWith(fromDocument->stringNotes[s]),
                   "a written document keeps the start of each tuning entry");
    fromDocument->stringNotes = tab.stringNotes;
    FUZZ_CHECK_SAME_TAB(*fromDocument, tab, "a written document reads back to the same tab");

    const auto exchange = exchangeData(tab);
    FUZZ_CHECK(exchange.has_value(), "a tab read can be exported");
    auto fromExchange = tabDataFromExchangeData(*exchange, nullptr, tab.stringCount());
    FUZZ_CHECK(fromExchange.has_value(), "an exported tab reads back");
    // Play-back choices and the lyric size stay with the document, and the exchange reader
    // trims the intro: what it loses by design is put back before comparing.
    fromExchange->playbackOptions = tab.playbackOptions;
    fromExchange->lyricSize = tab.lyricSize;
    if (tab.introText && fromExchange->introText.value_or(QString()) == tab.introText->trimmed())
        fromExchange->introText = tab.introText;
    FUZZ_CHECK_SAME_TAB(*fromExchange, tab, "an exported tab reads back to the same tab");
}

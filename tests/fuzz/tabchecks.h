#pragma once

#include "fuzzcheck.h"
#include "model/tabfileformat.h"

// What every tab read from outside must allow: the program saves it as a document and exports
// it in the exchange form, and both read back to the same tab.
inline void checkTabSurvivesBothForms(const TabData &tab)
{
    const QByteArray document = documentData(tab);
    FUZZ_CHECK(document.size() <= maximumTabFileBytes, "a tab read fits in a document");
    auto fromDocument = tabDataFromDocumentData(document);
    FUZZ_CHECK(fromDocument.has_value(), "a written document reads back");
    // The document form holds no title: the file's name is the tab's.
    fromDocument->title = tab.title;
    FUZZ_CHECK(*fromDocument == tab, "a written document reads back to the same tab");

    const auto exchange = exchangeData(tab);
    FUZZ_CHECK(exchange.has_value(), "a tab read can be exported");
    auto fromExchange = tabDataFromExchangeData(*exchange, nullptr, tab.stringCount());
    FUZZ_CHECK(fromExchange.has_value(), "an exported tab reads back");
    // Play-back choices and the lyric size stay with the document.
    fromExchange->playbackOptions = tab.playbackOptions;
    fromExchange->lyricSize = tab.lyricSize;
    FUZZ_CHECK(fromExchange->tabRowDatas == tab.tabRowDatas, "an exported tab keeps its rows");
    FUZZ_CHECK(*fromExchange == tab, "an exported tab reads back to the same tab");
}

#pragma once

#include "tabfileformat.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

// The two readers of the exchange form behind tabDataFromExchangeData. The direct one builds
// the tab from the UTF-8 as it goes, with no JSON tree and no string per cell; whatever JSON it
// is not sure to judge exactly as the tree reader does (a syntax error, an escape in a member
// name, a repeated member, deep nesting, an odd number) it leaves undecided, and the tree
// reader takes the bytes instead. So both readers give the same tab or the same refusal.
namespace ExchangeReader {

enum class Verdict { read, refused, undecided };

struct DirectResult {
    Verdict verdict = Verdict::undecided;
    std::optional<TabData> tab; // when read
    QString message;            // when refused
};

DirectResult readDirect(QByteArrayView bytes, int defaultStringCount);

// Through QJsonDocument: the parser's own words for bad JSON.
std::optional<TabData> readTree(const QByteArray &bytes, ImportError *error,
                                int defaultStringCount);

} // namespace ExchangeReader

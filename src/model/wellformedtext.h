#pragma once

#include <QString>
#include <QStringView>

// Text as both tab forms can carry it: a UTF-16 code unit without its partner has no UTF-8 form
// and no character, so it becomes U+FFFD, alike in every file we write.
bool hasUnpairedSurrogate(QStringView text);
QString withUnpairedSurrogatesReplaced(QStringView text);

#pragma once

#include <QJsonValue>

#include <cmath>
#include <optional>

// A number that is whole and within the signed 64-bit range; anything else is none.
inline std::optional<qint64> wholeNumber(double number)
{
    // 2^63 as a double: anything at or past it does not fit.
    if (number != std::trunc(number) || number < -9223372036854775808.0 ||
        number >= 9223372036854775808.0)
        return std::nullopt;
    return static_cast<qint64>(number);
}

// A JSON number that is a whole number within the signed 64-bit range; anything else is none.
// Integers written as such are taken exactly, past the 53 bits a double holds: a tempo that
// the document form kept must come back the same through the exchange form.
inline std::optional<qint64> jsonInteger(const QJsonValue &value)
{
    if (!value.isDouble())
        return std::nullopt;
    // toInteger gives its default for a fraction or a number out of range; two different
    // defaults tell that apart from a real value.
    const qint64 number = value.toInteger(0);
    if (number != value.toInteger(1))
        return std::nullopt;
    return number;
}

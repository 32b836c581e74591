#pragma once

#include <QJsonValue>

#include <cmath>
#include <optional>

// A JSON number that is a whole number within the signed 64-bit range; anything else is none.
inline std::optional<qint64> jsonInteger(const QJsonValue &value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    // 2^63 as a double: anything at or past it does not fit.
    if (number != std::trunc(number) || number < -9223372036854775808.0 ||
        number >= 9223372036854775808.0)
        return std::nullopt;
    return static_cast<qint64>(number);
}

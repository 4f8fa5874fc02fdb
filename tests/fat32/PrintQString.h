#pragma once
#include <QString>
#include <ostream>

// GoogleTest shows QStrings as text, not as arrays of 16-bit units.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }

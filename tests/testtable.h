// Data tables: columns<int, QString>("count", "text") adds one column of each type, named in order.
#pragma once

#include <QTest>

template <typename... T, typename... Names> void columns(Names... names)
{
    (QTest::addColumn<T>(names), ...);
}

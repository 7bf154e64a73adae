// A line terminal on loopback for the server's tests: collects every byte the server sends.
#pragma once

#include <QHostAddress>
#include <QTcpSocket>
#include <QtTest>

struct Terminal
{
    static constexpr int kWaitMs = 5000; // only waited out when something is broken

    explicit Terminal(quint16 port)
    {
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket,
                         [this] { got += socket.readAll(); });
        socket.connectToHost(QHostAddress::LocalHost, port);
    }
    bool waitFor(qsizetype size)
    {
        return QTest::qWaitFor([&] { return got.size() >= size; }, kWaitMs);
    }
    QTcpSocket socket;
    QByteArray got;
};

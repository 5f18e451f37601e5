#include "ppppeer.h"
#include "scenario.h"

#include <QSignalSpy>
#include <QTest>

namespace {

// The frame check sequence and the escaping of octets are those of RFC 1662, C.2 and 4.2.
QByteArray frame(const QByteArray &packet)
{
    quint16 check = 0xFFFF;
    QByteArray whole = QByteArrayLiteral("\xFF\x03") + packet;
    for (const char byte : qAsConst(whole)) {
        check = static_cast<quint16>(check ^ static_cast<uchar>(byte));
        for (int bit = 0; bit < 8; ++bit)
            check = static_cast<quint16>((check & 1) != 0 ? (check >> 1) ^ 0x8408 : check >> 1);
    }
    check = static_cast<quint16>(~check);
    whole.append(static_cast<char>(check & 0xFF)).append(static_cast<char>(check >> 8));
    QByteArray sent(1, '\x7E');
    for (const char byte : qAsConst(whole)) {
        const bool escaped = static_cast<uchar>(byte) < 0x20 || byte == '\x7D' || byte == '\x7E';
        if (escaped)
            sent.append('\x7D');
        sent.append(escaped ? static_cast<char>(byte ^ 0x20) : byte);
    }
    return sent.append('\x7E');
}

} // namespace

class TestPppPeer : public QObject
{
    Q_OBJECT

private slots:
    void answersTheCaller();
};

void TestPppPeer::answersTheCaller()
{
    PppPeer peer;
    QByteArray heard;
    connect(&peer, &PppPeer::received, this, [&heard](const QByteArray &bytes) { heard += bytes; });
    QVERIFY(peer.start(ScenarioLogin()));

    // LCP (RFC 1661, 5.1 and 5.2): a Configure-Request without options, its identifier 0x5A; the
    // Configure-Ack has the same.
    peer.write(frame(QByteArray::fromHex("C021015A0004")));
    const QByteArray answer = frame(QByteArray::fromHex("C021025A0004"));
    QTRY_VERIFY2(heard.contains(answer.mid(1)), heard.toHex(' ').constData());
}

QTEST_GUILESS_MAIN(TestPppPeer)
#include "tst_ppppeer.moc"

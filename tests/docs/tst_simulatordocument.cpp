#include "modemprofile.h"
#include "scenario.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

/// The examples of docs/simulator.md are scenarios and profiles that the simulator takes.
class SimulatorDocumentTest : public QObject
{
    Q_OBJECT

private slots:
    void exampleIsTaken_data()
    {
        QTest::addColumn<QByteArray>("json");
        QFile document(QStringLiteral(DOCUMENT));
        QVERIFY(document.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(document.readAll());
        static const QRegularExpression block(QStringLiteral("(?s)\n```json\n(.*?)\n```\n"));
        auto matches = block.globalMatch(text);
        int count = 0;
        while (matches.hasNext()) {
            const auto match = matches.next();
            const auto line = text.leftRef(match.capturedStart()).count(QLatin1Char('\n')) + 2;
            QTest::addRow("line %d", line) << match.captured(1).toUtf8();
            ++count;
        }
        QVERIFY(count >= 2);
    }
    void exampleIsTaken()
    {
        QFETCH(QByteArray, json);
        QString error;
        const bool isProfile
            = QJsonDocument::fromJson(json).object().contains(QLatin1String("source"));
        Scenario scenario;
        ModemProfile profile;
        QVERIFY2(isProfile ? ModemProfile::parse(json, &profile, &error)
                           : Scenario::parse(json, &scenario, &error),
            qPrintable(error));
    }
};

QTEST_APPLESS_MAIN(SimulatorDocumentTest)
#include "tst_simulatordocument.moc"

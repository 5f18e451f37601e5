// The dialer's configuration file: read as somebody may have left it, and records written and read.

#include "fuzzinput.h"
#include "onelinetext.h"
#include "testmodemscfg.h"

#include <QFile>

#include <algorithm>

namespace {

using Modems = QMap<QString, ModemInfo>;

QStringList textsOf(const ModemInfo &modem)
{
    return QStringList{modem.connectionName(), modem.portName(), modem.userName(), modem.password(),
               modem.phone(), modem.dialCommand(), modem.modemType()}
    + modem.phones() + modem.initLines();
}

Modems read(const QByteArray &text)
{
    QFile file(TestModemsCfg::configPath());
    require(
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size(),
        "the file can be written");
    file.close();
    return TestModemsCfg().modems();
}

// Values stand in the file as they are, for the dialer; read, they go by the rules of QSettings.
bool isPlain(const QString &text)
{
    return text == text.trimmed() && onelinetext::isValid(text) && text.isValidUtf16()
        && std::none_of(text.cbegin(), text.cend(), [](QChar c) {
               return QStringLiteral("\\\";,@%").contains(c) || c == QLatin1Char('=');
           });
}

bool isPlain(const ModemInfo &modem)
{
    const QStringList texts = textsOf(modem);
    // An empty entry ends its list, and the line that is always there is not part of one; either
    // may come of a text whose control characters are left out.
    return !modem.phones().contains(QString()) && !modem.initLines().contains(QString())
        && !modem.initLines().contains(QStringLiteral("ATZ"))
        && std::all_of(
            texts.cbegin(), texts.cend(), [](const QString &text) { return isPlain(text); });
}

void readAny(FuzzInput &input)
{
    const Modems modems = read(input.rest());
    for (const ModemInfo &modem : modems) {
        const QStringList texts = textsOf(modem);
        require(std::all_of(texts.cbegin(), texts.cend(),
                    [](const QString &text) { return onelinetext::isValid(text); }),
            "no value is more than a line");
        require(modem.phones().size() <= 9 && modem.initLines().size() <= 9,
            "lists are as long as they can be written");
    }
}

void writeAndRead(FuzzInput &input)
{
    ModemInfo neighbour;
    neighbour.setConnectionName(QStringLiteral("neighbour"));
    neighbour.setPortName(QStringLiteral("/dev/ttyUSB7"));
    ModemInfo modem;
    modem.setConnectionName(input.text());
    modem.setPortName(QStringLiteral("/dev/") + input.text());
    modem.setBaudrate(input.line().toInt());
    modem.setUserName(input.text());
    modem.setPassword(input.text());
    modem.setPhone(input.text());
    modem.setPhones(input.text().split(QLatin1Char(' '), Qt::SkipEmptyParts).mid(0, 9));
    QStringList initLines = input.text().split(QLatin1Char(' '), Qt::SkipEmptyParts).mid(0, 8);
    initLines.removeAll(QStringLiteral("ATZ")); // always there, and not part of a record
    modem.setInitLines(initLines);
    modem.setDialCommand(input.text());
    modem.setModemType(input.text());
    modem.setIsdn(input.line().toInt());
    const int flags = input.choice(4);
    modem.setNewPppd((flags & 1) != 0);
    modem.setStupidMode((flags & 2) != 0);

    TestModemsCfg file;
    file.setModems({{QStringLiteral("1"), modem}, {QStringLiteral("2"), neighbour}});
    require(file.lastError().isEmpty(), "the file can be written");
    const Modems modems = file.modems();
    const QString name = modem.connectionName();
    if (name != neighbour.connectionName() && name.trimmed() != neighbour.connectionName())
        require(modems.value(neighbour.connectionName()) == neighbour,
            "a record does nothing to the next one");
    if (name.isEmpty() || !isPlain(modem) || name == neighbour.connectionName())
        return;
    require(modems.value(name) == modem, "a record that was written is read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    TestModemsCfg::setConfigPath();
    FuzzInput input(data, size);
    readOrWrite(input, readAny, writeAndRead);
    return 0;
}

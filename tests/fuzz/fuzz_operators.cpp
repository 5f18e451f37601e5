// The operators' table: the file that the system brings, and one laid over it.

#include "fuzzinput.h"
#include "onelinetext.h"
#include "operatortable.h"

namespace {

const QByteArray kSystem = R"(<serviceproviders format="2.0"><country code="ru">
<provider primary="true"><name>MTS</name><gsm><network-id mcc="250" mnc="01"/>
<balance-check><ussd>*100#</ussd></balance-check><msisdn-query><ussd>*111*0887#</ussd></msisdn-query>
<apn value="internet.mts.ru"><usage type="internet"/><username>mts</username><password>mts</password>
</apn></gsm></provider></country></serviceproviders>)";

void requireUsable(const OperatorData &data)
{
    for (const QString &text : {data.name(), data.userName(), data.password(), data.modemInitLine(),
             data.balancePhone(), data.selfNumberPhone()})
        require(onelinetext::isValid(text), "no value is more than a line");
    const QString line = data.modemInitLine();
    require(line.isEmpty()
            || (line.startsWith(QLatin1String("AT+CGDCONT=1,\"IP\",\""))
                && line.count(QLatin1Char('"')) == 4 && line.endsWith(QLatin1Char('"'))),
        "an access point is one parameter");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QString system = fuzzFile(QStringLiteral("system.xml"), kSystem);
    const QByteArray bytes = FuzzInput(data, size).rest();
    const QString local = fuzzFile(QStringLiteral("local.xml"), bytes);

    OperatorTable alone;
    alone.read(local);
    OperatorTable table;
    require(table.read(system), "the system's file is read");
    const auto before = table.find(250, 1);
    table.read(local);
    require(table.size() >= alone.size() && table.size() <= alone.size() + 1,
        "a file laid over another takes nothing away");
    const auto after = table.find(250, 1);
    require(after && !after->modemInitLine().isEmpty() && !after->balancePhone().isEmpty()
            && !after->selfNumberPhone().isEmpty(),
        "what it leaves out stays");
    requireUsable(*after);
    if (!alone.find(250, 1))
        require(*after == *before, "what it does not name stays as it was");
    for (const int mcc : {1, 250, 255, 401, 999}) {
        for (const int mnc : {0, 1, 2, 99, 100, 999}) {
            if (const auto found = alone.find(mcc, mnc))
                requireUsable(*found);
        }
    }
    return 0;
}

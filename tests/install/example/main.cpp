// A tool on the terminal's bus: saves a record of settings, or shows what is saved.
//
//   busrecord save OWNER TEXT
//   busrecord load OWNER
//
// With the installed libraries it is built by CMake, or by
//   c++ -fPIC main.cpp $(pkg-config --cflags --libs tavbus) -o busrecord

#include <tavbusqueryhandler.h>

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    QTextStream out(stdout);
    QTextStream err(stderr);

    tavbus::TavBusQueryHandler bus(QStringLiteral("busrecord"));
    if (!bus.open()) {
        err << "The bus cannot be opened.\n";
        return 1;
    }
    tavbus::ClientSettings record;
    if (words.size() == 3 && words.first() == QLatin1String("save")) {
        record.setOwner(words.at(1));
        record.setDescription(QStringLiteral("busrecord"));
        record.setDt(QDateTime::currentDateTimeUtc());
        record.setSettings({words.at(2)});
        return bus.saveSettings(record) ? 0 : 1;
    }
    if (words.size() == 2 && words.first() == QLatin1String("load")) {
        if (!bus.loadSettings(words.at(1), record))
            return 1;
        const QList<QVariant> settings = record.settings();
        for (const QVariant &value : settings)
            out << value.toString() << '\n';
        return 0;
    }
    err << "busrecord save OWNER TEXT | load OWNER\n";
    return 2;
}

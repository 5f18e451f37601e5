#include "ethernetconfigmodel.h"
#include "fakesudo.h"
#include "quickconfigurator.h"

#include <QAbstractItemModelTester>
#include <QFont>
#include <QIcon>
#include <QSignalSpy>
#include <QtTest>

namespace {

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

// The model gives all its rows under any parent and the same flags for no index, which its views
// never ask for and the tester always does. This one answers that as the tester wants it: all else
// is checked.
class TestedModel : public EthernetConfigModel
{
public:
    explicit TestedModel(EthernetConfigurator *configurator)
        : EthernetConfigModel(configurator, nullptr)
    {
    }
    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : EthernetConfigModel::rowCount(parent);
    }
    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        return index.isValid() ? EthernetConfigModel::flags(index) : Qt::NoItemFlags;
    }
};

// What a row shows, apart from its place.
QHash<QString, bool> used(EthernetConfigModel &model)
{
    QHash<QString, bool> flags;
    for (int row = 0; row < model.rowCount(); ++row) {
        QString name;
        InterfaceSettings settings;
        bool isUsed = false;
        if (model.getSettings(model.index(row, 0), name, settings, isUsed))
            flags[name] = isUsed;
    }
    return flags;
}

} // namespace

class TestEthernetConfigModel : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("iface eth0 inet static\n\taddress 10.0.0.1\niface eth1 inet dhcp\n"
                   "iface eth2 inet static\n\taddress 10.0.0.3\n");
    }

    void settingsCompareEveryField_data()
    {
        QTest::addColumn<InterfaceSettings>("other");
        QTest::addColumn<bool>("isEqual");
        const InterfaceSettings same = staticSettings(s("a"), s("b"), s("c"), s("d"));
        QTest::newRow("the same") << same << true;
        QTest::newRow("address") << staticSettings(s("A"), s("b"), s("c"), s("d")) << false;
        QTest::newRow("net mask") << staticSettings(s("a"), s("B"), s("c"), s("d")) << false;
        QTest::newRow("gateway") << staticSettings(s("a"), s("b"), s("C"), s("d")) << false;
        QTest::newRow("servers") << staticSettings(s("a"), s("b"), s("c"), s("D")) << false;
        InterfaceSettings dhcp = same;
        dhcp.setUseDhcp(true);
        QTest::newRow("DHCP") << dhcp << false;
        QTest::newRow("defaults") << InterfaceSettings() << false;
    }

    void settingsCompareEveryField()
    {
        QFETCH(InterfaceSettings, other);
        QFETCH(bool, isEqual);
        const InterfaceSettings settings = staticSettings(s("a"), s("b"), s("c"), s("d"));
        QCOMPARE(settings == other, isEqual);
        QCOMPARE(settings != other, !isEqual);
    }

    void settingsDefaults()
    {
        const InterfaceSettings settings;
        QVERIFY(settings.useDhcp());
        QVERIFY(settings.address().isEmpty() && settings.netMask().isEmpty()
            && settings.gateway().isEmpty() && settings.dnsServers().isEmpty());
        QCOMPARE(QByteArray(QMetaType::typeName(qMetaTypeId<InterfaceSettings>())),
            QByteArray("InterfaceSettings"));
    }

    void isEmptyUntilReloaded()
    {
        TestedModel model(new QuickConfigurator({s("eth0")}, path()));
        const QAbstractItemModelTester tester(&model);
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), 2);
        const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        model.reload();
        QCOMPARE(resets.count(), 1);
        QCOMPARE(model.rowCount(), 1);
    }

    void ownsItsConfigurator()
    {
        QPointer<EthernetConfigurator> configurator = new QuickConfigurator;
        {
            const EthernetConfigModel model(configurator, nullptr);
            QCOMPARE(configurator->parent(), &model);
        }
        QVERIFY(!configurator);
    }

    void makesTheSystemsConfiguratorByItself()
    {
        const EthernetConfigModel model(nullptr);
        QVERIFY(model.findChild<EthernetConfigurator *>());
    }

    void showsIconAndName()
    {
        TestedModel model(new QuickConfigurator({s("eth0")}, path(), {s("eth1")}));
        const QAbstractItemModelTester tester(&model);
        model.reload();
        QCOMPARE(model.rowCount(), 2);
        for (int row = 0; row < 2; ++row) {
            const QModelIndex icon = model.index(row, 0);
            const QModelIndex name = model.index(row, 1);
            const bool isUsed = name.data().toString() == s("eth0");
            QCOMPARE(name.data().toString(), isUsed ? s("eth0") : s("eth1"));
            QCOMPARE(icon.data(Qt::DecorationRole).value<QIcon>().pixmap(96).toImage(),
                QImage(isUsed ? s(":/icons/usedinterface.png") : s(":/icons/unusedinterface.png"))
                    .convertToFormat(QImage::Format_ARGB32_Premultiplied));
            QFont font;
            font.setPointSize(18);
            QCOMPARE(name.data(Qt::FontRole).value<QFont>(), font);
        }
    }

    void theIconsDifferInShapeToo()
    {
        const QImage usedIcon(s(":/icons/usedinterface.png"));
        const QImage unusedIcon(s(":/icons/unusedinterface.png"));
        QCOMPARE(usedIcon.size(), QSize(96, 96));
        QCOMPARE(unusedIcon.size(), QSize(96, 96));
        int differing = 0;
        for (int y = 0; y < 96; ++y) {
            for (int x = 0; x < 96; ++x)
                differing += qAbs(qGray(usedIcon.pixel(x, y)) - qGray(unusedIcon.pixel(x, y))) > 60;
        }
        QVERIFY2(differing > 96 * 96 / 4, "told apart without colour");
    }

    void answersNothingElse()
    {
        EthernetConfigModel model(new QuickConfigurator({s("eth0")}, path()), nullptr);
        model.reload();
        for (int role = 0; role < Qt::UserRole + 2; ++role) {
            QCOMPARE(model.data(model.index(0, 0), role).isValid(), role == Qt::DecorationRole);
            QCOMPARE(model.data(model.index(0, 1), role).isValid(),
                role == Qt::DisplayRole || role == Qt::FontRole);
            QVERIFY(!model.data(QModelIndex(), role).isValid());
            QVERIFY(model.headerData(1, Qt::Horizontal, role).isValid());
            QCOMPARE(model.headerData(7, Qt::Horizontal, role), QVariant(QString()));
        }
        QCOMPARE(model.headerData(0, Qt::Vertical), QVariant(1));
        QCOMPARE(model.flags(model.index(0, 1)), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        QCOMPARE(model.flags(QModelIndex()), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        QCOMPARE(model.rowCount(model.index(0, 0)), 1);
        QCOMPARE(model.columnCount(model.index(0, 0)), 2);
    }

    void aRowThatHasGoneAnswersNothing()
    {
        auto *const configurator = new QuickConfigurator({s("eth0"), s("eth1")}, path());
        EthernetConfigModel model(configurator, nullptr);
        model.reload();
        const QModelIndex gone = model.index(1, 1);
        const QModelIndex goneIcon = model.index(1, 0);
        configurator->interfaces = {{s("eth0"), true}};
        model.reload();
        QVERIFY(!model.data(gone).isValid());
        const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        model.switchAllow(goneIcon);
        QCOMPARE(resets.count(), 0);
        QString name = s("before");
        InterfaceSettings settings = staticSettings(s("before"));
        bool isUsed = true;
        QVERIFY(!model.getSettings(gone, name, settings, isUsed));
        QCOMPARE(name, QString());
        QCOMPARE(settings, InterfaceSettings());
        QVERIFY(isUsed); // left as it was
    }

    void aSwitchResetsTheModel()
    {
        TestedModel model(new QuickConfigurator({s("eth0")}, path(), {s("eth1")}));
        const QAbstractItemModelTester tester(&model);
        model.reload();
        const QHash<QString, bool> before = used(model);
        QCOMPARE(before, (QHash<QString, bool>{{s("eth0"), true}, {s("eth1"), false}}));
        const QString name = model.index(0, 1).data().toString();
        const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);

        model.switchAllow(model.index(0, 0));
        QCOMPARE(resets.count(), 1);
        QCOMPARE(used(model).value(name), !before.value(name));

        model.switchAllow(model.index(0, 0));
        QCOMPARE(resets.count(), 2);
        QCOMPARE(used(model), before);
        QCOMPARE(changes.count(), 0);
    }

    void onlyTheIconsColumnSwitches()
    {
        EthernetConfigModel model(new QuickConfigurator({s("eth0")}, path()), nullptr);
        model.reload();
        const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        model.switchAllow(model.index(0, 1));
        model.switchAllow(QModelIndex());
        QCOMPARE(resets.count(), 0);
        QCOMPARE(used(model), (QHash<QString, bool>{{s("eth0"), true}}));
    }

    void settingsComeFromTheFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<InterfaceSettings>("expected");
        QTest::newRow("static") << s("eth0") << staticSettings(s("10.0.0.1"));
        QTest::newRow("DHCP: the defaults") << s("eth1") << InterfaceSettings();
        QTest::newRow("not in the file: the defaults") << s("eth9") << InterfaceSettings();
    }

    void settingsComeFromTheFile()
    {
        QFETCH(QString, name);
        QFETCH(InterfaceSettings, expected);
        EthernetConfigModel model(new QuickConfigurator({name}, path()), nullptr);
        model.reload();
        QCOMPARE(settingsOf(model, name), expected);
    }

    void editsLastUntilTheReload()
    {
        EthernetConfigModel model(new QuickConfigurator({s("eth0")}, path()), nullptr);
        model.reload();
        const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        const QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        model.setSettings(s("eth0"), staticSettings(s("1.1.1.1")));
        QCOMPARE(settingsOf(model, s("eth0")), staticSettings(s("1.1.1.1")));
        QCOMPARE(resets.count() + changes.count(), 0);
        model.switchAllow(model.index(0, 0));
        QCOMPARE(settingsOf(model, s("eth0")), staticSettings(s("1.1.1.1")));
        model.reload();
        QCOMPARE(settingsOf(model, s("eth0")), staticSettings(s("10.0.0.1")));
        QCOMPARE(used(model), (QHash<QString, bool>{{s("eth0"), true}}));
    }

    void onlyUsedInterfacesAreWritten()
    {
        EthernetConfigModel model(
            new QuickConfigurator({s("eth0"), s("eth1"), QString()}, path(), {s("eth2")}), nullptr);
        model.reload();
        model.setSettings(s("eth1"), staticSettings(s("10.0.0.2")));
        model.setSettings(s("unknown"), staticSettings(s("10.0.0.9")));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(s("^Not taken down")));
        QCOMPARE(applied(model),
            (SettingsMap{{s("eth0"), staticSettings(s("10.0.0.1"))},
                {s("eth1"), staticSettings(s("10.0.0.2"))}}));
    }

    void anInterfaceSwitchedOnIsWritten()
    {
        EthernetConfigModel model(new QuickConfigurator({}, path(), {s("eth2")}), nullptr);
        model.reload();
        QCOMPARE(applied(model), SettingsMap());
        model.switchAllow(model.index(0, 0));
        QCOMPARE(applied(model), (SettingsMap{{s("eth2"), staticSettings(s("10.0.0.3"))}}));
    }

    void withoutAnInterfaceOnlyTheHeaderIsWritten()
    {
        EthernetConfigModel model(new QuickConfigurator({}, path()), nullptr);
        model.reload();
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(applied(model), SettingsMap());
        QFile file(writtenFile());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().endsWith("\niface lo inet loopback\n\n#Network interfaces\n"));
    }

    void logMessagesArePassedOn()
    {
        auto *const configurator = new QuickConfigurator;
        EthernetConfigModel model(configurator, nullptr);
        QSignalSpy log(&model, &EthernetConfigModel::logMessage);
        emit configurator->logMessage(s("text"));
        QCOMPARE(log.count(), 1);
        QCOMPARE(log.first().first().toString(), s("text"));
    }

    void aConfiguratorThatHasGoneLeavesNothing()
    {
        auto *const configurator = new QuickConfigurator({s("eth0")}, path());
        EthernetConfigModel model(configurator, nullptr);
        model.reload();
        delete configurator;
        const QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        model.apply();
        QCOMPARE(model.rowCount(), 1);
        model.reload();
        QCOMPARE(resets.count(), 1);
        QCOMPARE(model.rowCount(), 0);
    }

private:
    QString path() const { return m_box.filePath(s("interfaces")); }
    static QString writtenFile() { return QDir::tempPath() + s("/interfaces.tmp"); }

    static InterfaceSettings settingsOf(EthernetConfigModel &model, const QString &name)
    {
        for (int row = 0; row < model.rowCount(); ++row) {
            QString rowsName;
            InterfaceSettings settings;
            bool isUsed = false;
            if (model.getSettings(model.index(row, 1), rowsName, settings, isUsed)
                && rowsName == name)
                return settings;
        }
        return staticSettings(s("no such row"));
    }

    // What arrived in the file, with the commands standing in.
    static SettingsMap applied(EthernetConfigModel &model)
    {
        const FakeSudo sudo;
        model.apply();
        const auto *const process = model.findChild<QProcess *>();
        if (!QTest::qWaitFor([&] {
                return !sudo.calls().isEmpty()
                    && sudo.calls().last() == s("[service][networking][restart]")
                    && process->state() == QProcess::NotRunning;
            }))
            return {{s("the commands did not come to their end"), InterfaceSettings()}};
        const QuickConfigurator reader(
            {s("eth0"), s("eth1"), s("eth2"), s("unknown")}, writtenFile());
        return reader.availableEthernetSettings();
    }

    QTemporaryDir m_box;
};

QTEST_MAIN(TestEthernetConfigModel)
#include "tst_ethernetconfigmodel.moc"

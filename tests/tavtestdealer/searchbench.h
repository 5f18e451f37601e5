#pragma once

#include "modalbox.h"
#include "scriptedmodem.h"
#include "searchwidget.h"

#include "fakeservice.h"
#include "modemsfinder.h"
#include "modemsmodel.h"

#include <QListView>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <memory>
#include <vector>

/// Looks at the ports of the test only.
class TestFinder : public ModemsFinder
{
public:
    using ModemsFinder::ModemsFinder;
    QList<SearchPort> searched;

protected:
    QList<SearchPort> ports() const override { return searched; }
};

/// The Settings page with ports of the test's own, before a terminal whose services are at work.
class SearchBench
{
public:
    SearchBench()
        : finder(new TestFinder)
        , page(std::make_unique<SearchWidget>(finder))
        , started(page.get(), &SearchWidget::started)
        , finished(page.get(), &SearchWidget::finished)
    {
        page->setFixedSize(794, 460);
        page->show();
    }
    SearchBench(const SearchBench &) = delete;
    SearchBench &operator=(const SearchBench &) = delete;

    ScriptedModem &add(const QByteArray &imei)
    {
        modems.push_back(std::make_unique<ScriptedModem>());
        modems.back()->answers["AT+CGSN"] = ScriptedModem::ok(imei);
        finder->searched << searchPortOf(modems.back()->path());
        return *modems.back();
    }
    QToolButton *button(const char *name) const
    {
        return page->findChild<QToolButton *>(QLatin1String(name));
    }
    QListView *list() const { return page->findChild<QListView *>(QStringLiteral("listView")); }
    QStringList names() const { return qobject_cast<ModemsModel *>(list()->model())->stringList(); }
    void press(const char *name) { QTest::mouseClick(button(name), Qt::LeftButton); }
    bool isIdle() const
    {
        return button("tbSearch")->isEnabled() && list()->isEnabled() && !finder->isRunning();
    }

    std::vector<std::unique_ptr<ScriptedModem>> modems;
    TestFinder *const finder; // the page's
    std::unique_ptr<SearchWidget> page;
    QSignalSpy started;
    QSignalSpy finished;
};

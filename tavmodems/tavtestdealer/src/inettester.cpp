#include "inettester.h"

#include "initconfig.h"
#include "logbinary.h"

#include <QDebug>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>
#include <QUrl>

namespace {

constexpr int kPages = 2;
constexpr int kLoggedBytes = 128;

} // namespace

InetTester::InetTester(QObject *parent)
    : AbstractWorker(parent)
{
}

InetTester::~InetTester() = default;

bool InetTester::doStart()
{
    doStop();
    m_timer = new QTimer(this);
    m_timer->setInterval(INTERVAL);
    connect(m_timer, &QTimer::timeout, this, QOverload<>::of(&InetTester::test));
    m_timer->start();
    test();
    return true;
}

bool InetTester::doStop()
{
    if (m_timer) {
        m_timer->stop();
        m_timer->deleteLater();
        m_timer.clear();
    }
    return false;
}

void InetTester::test()
{
    m_result = false;
    m_answers = 0;
    qDebug("Start test");
    const InitConfig config;
    test(config.makerPage());
    test(config.publicPage());
}

void InetTester::test(const QUrl &address)
{
    auto *const manager = new QNetworkAccessManager;
    if (!get(manager, QNetworkRequest(address))) {
        setConnectionResult(false);
        manager->deleteLater();
        return;
    }
    connect(manager, &QNetworkAccessManager::finished, this, &InetTester::handleReply);
    connect(manager, &QNetworkAccessManager::finished, manager, &QObject::deleteLater);
    // A request has no time limit of its own: what is still out when the thread ends goes with it.
    connect(thread(), &QThread::finished, manager, &QObject::deleteLater);
}

QNetworkReply *InetTester::get(QNetworkAccessManager *manager, const QNetworkRequest &request)
{
    return manager->get(request);
}

void InetTester::handleReply(QNetworkReply *reply)
{
    const bool ok = reply->error() == QNetworkReply::NoError;
    setConnectionResult(ok);
    if (ok)
        qDebug() << logbinary(reply->readAll().left(kLoggedBytes), "UTF-8");
    else
        qDebug().noquote() << reply->errorString();
    reply->deleteLater();
}

void InetTester::setConnectionResult(bool ok)
{
    ++m_answers;
    m_result = m_result || ok;
    if (m_answers == kPages) {
        emit connectionExists(m_result);
        qDebug("Stop test");
    }
}

#pragma once

#include "abstractworker.h"

#include <QPointer>

class QNetworkAccessManager;
class QNetworkReply;
class QNetworkRequest;
class QTimer;
class QUrl;

/// Finds out, at once and then every minute, whether the Internet can be reached: at least one of
/// the two pages that the terminal's configuration names must answer. For a thread of its own,
/// which must run an event loop.
class InetTester : public AbstractWorker
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(InetTester)

public:
    static constexpr int INTERVAL = 60000; ///< ms from round to round

    explicit InetTester(QObject *parent = nullptr);
    ~InetTester() override;

    bool doStart() override;
    bool doStop() override; ///< false in every case

public slots:
    /// One round. Answers that are still out from an earlier one count towards it.
    void test();

signals:
    /// Once a round, when both pages have answered or failed.
    void connectionExists(bool exists);

protected:
    /// Starts the request; the reply belongs to manager. Null counts as a failed one.
    virtual QNetworkReply *get(QNetworkAccessManager *manager, const QNetworkRequest &request);

private:
    void test(const QUrl &address);
    void setConnectionResult(bool ok);
    void handleReply(QNetworkReply *reply);

    bool m_result = false; // whether a page answered in this round
    int m_answers = 0; // received in this round
    QPointer<QTimer> m_timer; // child of this; null while stopped
};

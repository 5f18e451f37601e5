#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

/// The functions that receive the messages of single logging categories, each on the thread that
/// registered it. See LoggerManager, which documents the promises; all functions may be called from
/// any thread.
class LogOutputs
{
    Q_DISABLE_COPY_MOVE(LogOutputs)

public:
    using Function = std::function<void(QtMsgType, const QMessageLogContext &, const QString &)>;

    LogOutputs();
    ~LogOutputs();

    void set(const QByteArray &name, Function function);
    void remove(const QByteArray &name);
    bool contains(const QByteArray &name) const;
    void pass(QtMsgType type, const QMessageLogContext &context, const QString &text);

private:
    struct Output;
    struct Message;
    class Mailbox;
    struct Address;
    friend class Mailbox;

    static std::shared_ptr<Address> addressOfThisThread();
    void call(const std::shared_ptr<Output> &output, const Message &message);

    mutable std::mutex m_mutex;
    std::condition_variable m_callEnded;
    std::map<QByteArray, std::shared_ptr<Output>> m_outputs;
};

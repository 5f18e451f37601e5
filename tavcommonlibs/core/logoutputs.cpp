#include "logoutputs.h"

#include <QCoreApplication>
#include <QObject>

#include <deque>

/// A message that outlives the call that logged it.
struct LogOutputs::Message
{
    Message(QtMsgType messageType, const QMessageLogContext &context, const QString &messageText)
        : type(messageType)
        , file(context.file)
        , function(context.function)
        , category(context.category)
        , line(context.line)
        , text(messageText)
    {
    }

    QtMsgType type;
    QByteArray file;
    QByteArray function;
    QByteArray category;
    int line;
    QString text;
};

/// How other threads reach the mailbox of one. The queue is ours, not Qt's event queue, so that a
/// burst of messages costs one event.
struct LogOutputs::Address
{
    std::mutex mutex;
    QObject *mailbox = nullptr; // null once the thread has ended
    std::deque<std::pair<std::weak_ptr<Output>, Message>> queue;
};

struct LogOutputs::Output
{
    LogOutputs *owner;
    Function function;
    std::shared_ptr<Address> address;
    bool isRemoved = false; // this and the next: under the owner's mutex
    bool isRunning = false;
};

/// Lives in a thread that registered an output, until the thread ends.
class LogOutputs::Mailbox : public QObject
{
public:
    Mailbox() { address->mailbox = this; }

    ~Mailbox() override
    {
        ofThisThread = nullptr;
        const std::lock_guard lock(address->mutex);
        address->mailbox = nullptr;
        address->queue.clear();
    }

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        // Only what is there now: outputs that log must not keep the event loop out.
        decltype(address->queue) batch;
        {
            const std::lock_guard lock(address->mutex);
            batch.swap(address->queue);
        }
        for (const auto &[weak, message] : batch) {
            if (const auto output = weak.lock())
                output->owner->call(output, message);
        }
        return true;
    }

    const std::shared_ptr<Address> address = std::make_shared<Address>();

    // Plain, so that it can still be asked while the thread's own objects are taken down.
    static thread_local Address *ofThisThread;
};

thread_local LogOutputs::Address *LogOutputs::Mailbox::ofThisThread = nullptr;

LogOutputs::LogOutputs() = default;
LogOutputs::~LogOutputs() = default;

std::shared_ptr<LogOutputs::Address> LogOutputs::addressOfThisThread()
{
    thread_local Mailbox mailbox;
    Mailbox::ofThisThread = mailbox.address.get();
    return mailbox.address;
}

void LogOutputs::set(const QByteArray &name, Function function)
{
    remove(name);
    auto output = std::make_shared<Output>();
    output->owner = this;
    output->function = std::move(function);
    output->address = addressOfThisThread();
    const std::lock_guard lock(m_mutex);
    m_outputs[name] = std::move(output);
}

void LogOutputs::remove(const QByteArray &name)
{
    std::shared_ptr<Output> output; // outlives the lock: its function may log while it is destroyed
    std::unique_lock lock(m_mutex);
    const auto found = m_outputs.find(name);
    if (found == m_outputs.end())
        return;
    output = std::move(found->second);
    m_outputs.erase(found);
    output->isRemoved = true;
    // On its own thread the output can only be running below us on the stack.
    if (output->address.get() != Mailbox::ofThisThread)
        m_callEnded.wait(lock, [&] { return !output->isRunning; });
    lock.unlock();
}

bool LogOutputs::contains(const QByteArray &name) const
{
    const std::lock_guard lock(m_mutex);
    return m_outputs.count(name) > 0;
}

void LogOutputs::pass(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const char *category = context.category ? context.category : "default";
    std::shared_ptr<Output> output;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_outputs.find(
            QByteArray::fromRawData(category, static_cast<int>(qstrlen(category))));
        if (found == m_outputs.end())
            return;
        output = found->second;
    }
    const Message message(type, context, text);
    Address &address = *output->address;
    if (&address == Mailbox::ofThisThread) {
        call(output, message);
        return;
    }
    const std::lock_guard lock(address.mutex);
    if (!address.mailbox)
        return;
    address.queue.emplace_back(output, message);
    if (address.queue.size() == 1)
        QCoreApplication::postEvent(address.mailbox, new QEvent(QEvent::User));
}

void LogOutputs::call(const std::shared_ptr<Output> &output, const Message &message)
{
    {
        const std::lock_guard lock(m_mutex);
        // What an output itself logs is not passed to it again: that would never end.
        if (output->isRemoved || output->isRunning)
            return;
        output->isRunning = true;
    }
    const QMessageLogContext context(message.file.constData(), message.line,
        message.function.constData(), message.category.constData());
    output->function(message.type, context, message.text);
    {
        const std::lock_guard lock(m_mutex);
        output->isRunning = false;
    }
    m_callEnded.notify_all();
}

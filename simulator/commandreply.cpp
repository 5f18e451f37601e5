#include "commandreply.h"

CommandReply CommandReply::ok(const QList<QByteArray> &lines)
{
    CommandReply reply;
    reply.lines = lines;
    return reply;
}

CommandReply CommandReply::failed(const QByteArray &result)
{
    CommandReply reply;
    reply.result = result;
    return reply;
}

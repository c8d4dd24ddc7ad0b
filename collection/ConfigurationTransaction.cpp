#include "collection/ConfigurationTransaction.h"

#include "collection/ManagementCommands.h"

namespace Collection
{

namespace
{
// Parameter selector, channel and up to this many data bytes per write.
const unsigned int kMaximumData = 32;
} // namespace

ConfigurationTransaction::ConfigurationTransaction(unsigned char setCommand, unsigned char channel)
    : m_setCommand(setCommand), m_channel(channel), m_begun(false),
      m_result(ManagementResult::success())
{
}

bool ConfigurationTransaction::Begin()
{
    const unsigned char mark = ManagementCommands::kSetInProgress;
    m_begun = send("SetInProgress", ManagementCommands::kSetInProgressParameter, &mark, 1);
    return m_begun;
}

void ConfigurationTransaction::Write(const char* request, unsigned char parameter,
                                     const unsigned char* data, unsigned char length)
{
    if (m_result.done)
        send(request, parameter, data, length);
}

ManagementResult ConfigurationTransaction::Finish()
{
    if (!m_begun)
        return m_result;
    if (m_result.done)
    {
        const unsigned char commit = ManagementCommands::kCommitWrite;
        send("Commit", ManagementCommands::kSetInProgressParameter, &commit, 1);
    }
    const unsigned char complete = ManagementCommands::kSetComplete;
    ManagementResult failure = m_result;
    m_result = ManagementResult::success();
    send("SetComplete", ManagementCommands::kSetInProgressParameter, &complete, 1);
    m_begun = false;
    return failure.done ? m_result : failure;
}

bool ConfigurationTransaction::send(const char* request, unsigned char parameter,
                                    const unsigned char* data, unsigned char length)
{
    unsigned char message[2 + kMaximumData] = {m_channel, parameter};
    for (unsigned int i = 0; i < length && i < kMaximumData; ++i)
        message[2 + i] = data[i];
    const unsigned char messageLength =
        static_cast<unsigned char>(2 + (length < kMaximumData ? length : kMaximumData));
    ManagementExchange exchange(ManagementCommands::kTransport, m_setCommand, message,
                                messageLength);
    if (exchange.succeeded(1))
        return true;
    m_result = ManagementResult::refused(request, exchange);
    return false;
}

} // namespace Collection

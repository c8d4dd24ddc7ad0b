#pragma once

#include "collection/ManagementResult.h"

namespace Collection
{

// Writes configuration parameters of one channel (LAN or serial over LAN)
// the standard way: set in progress, the writes, commit write, set complete.
//
//     ConfigurationTransaction lan(ManagementCommands::kSetLANParameter, channel);
//     if (!lan.Begin())
//         return lan.Finish();
//     lan.Write("IPAddress", 3, address, 4);
//     return lan.Finish();
//
// Begin only when there is something to write. After a refused write the
// rest is skipped and nothing is committed, but the set is still marked
// complete, so the controller is never left with a set in progress.
class ConfigurationTransaction
{
public:
    // `setCommand`: Set LAN or Set SOL Configuration Parameters (network
    // function transport).
    ConfigurationTransaction(unsigned char setCommand, unsigned char channel);

    // Marks the set in progress. False when the controller refused it (81h:
    // another set is in progress); then write nothing and only call Finish,
    // which sends nothing more.
    bool Begin();
    // Writes one parameter unless something failed before; `request` names
    // it in the result.
    void Write(const char* request, unsigned char parameter, const unsigned char* data,
               unsigned char length);
    // Commit write unless something failed, then set complete if the set was
    // begun. The first failure, or success.
    ManagementResult Finish();

private:
    bool send(const char* request, unsigned char parameter, const unsigned char* data,
              unsigned char length);

    unsigned char m_setCommand;
    unsigned char m_channel;
    bool m_begun;
    ManagementResult m_result;
};

} // namespace Collection

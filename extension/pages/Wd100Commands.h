#pragma once

class NSP;

namespace Collection
{
class Warden100;
}

// The commands of "wd100.nsp", one file each (Wd100Query.cpp, ...). Each
// writes its whole answer; the controller is known to be there. Parameters
// with an empty value count as not given. Every value is checked before the
// first request that changes anything is sent.
namespace Wd100Commands
{
void Query(NSP& nsp, Collection::Warden100& warden);
void SetNetwork(NSP& nsp, Collection::Warden100& warden);
void SetUser(NSP& nsp, Collection::Warden100& warden);
void SetServices(NSP& nsp, Collection::Warden100& warden);
void SetPowerPolicy(NSP& nsp, Collection::Warden100& warden);

// For the commands that change the LAN channel: writes the bad-value answer
// when `bad` names a parameter, or {"ErrorCode":1} when the controller has no
// LAN channel. True, with the channel in `channel`, when neither was written
// and the change may be sent.
bool readyToChange(NSP& nsp, const Collection::Warden100& warden, const char* bad,
                   unsigned char& channel);
} // namespace Wd100Commands

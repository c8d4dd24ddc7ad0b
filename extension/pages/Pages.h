#pragma once

#include "common/IString.h"

class NSP;

// One function per page of the dispatcher, each in its own file
// (IndexPage.cpp, DebugPage.cpp, ...). A page reads its parameters through
// nsp.request() and writes its answer with nsp.response().Write; the
// dispatcher flushes the response after the page returns, whatever it wrote.
namespace Pages
{
using Page = void (*)(NSP& nsp);

// The command page called `name` (the whole normalised URL, compared ignoring
// case), or null: then the URL names a file. The table is in PageTable.cpp.
Page find(const Common::istring& name);

void Index(NSP& nsp);        // start page redirect
void AllStorage(NSP& nsp);   // storage inventory
void Debug(NSP& nsp);        // debug log
void Hardware(NSP& nsp);     // system summary
void Wd100(NSP& nsp);        // management processor settings
void OSTree(NSP& nsp);       // operating-system catalogue
void FSETReset(NSP& nsp);    // firmware-setup reset
void Reboot(NSP& nsp);       // reboot
void SetBootOrder(NSP& nsp); // boot order
void System(NSP& nsp);       // file, folder and program services
void Unattended(NSP& nsp);   // answer files

// {"ErrorCode":1}: the answer of a page whose collection has not landed yet,
// or does not support this machine.
void NotAvailable(NSP& nsp);
} // namespace Pages

#pragma once

#include "sim/Machine.h"
#include "sim/RomServices.h"

// A ROM with environment variables: the maker's ROM services and one
// variable (a ROM with none does not answer the module's support test).
inline void addCorvaneRom(Sim::Machine& machine)
{
    Sim::RomServices::addStandardRom(machine);
    machine.environment().set("RXLANG", {'e', 'n'});
}

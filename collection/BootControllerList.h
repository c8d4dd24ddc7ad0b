#pragma once

namespace Collection
{

// The firmware's boot-controller order: the ROM environment variable
// "RXHORD", 32 records of 8 bytes whose position is the controller's place
// in the order. A record holds the controller's subsystem value in bytes 0-3
// (stored byte-reversed), its bus in byte 5 and its device/function byte
// (device << 3 | function) in byte 6.
//
// When the ROM offers no environment variables, or the read fails, the
// records stay zeroed: they then match only a controller at 00:00.0 whose
// subsystem value is 0, which takes rank 0.
class BootControllerList
{
public:
    static const unsigned char kUnranked = 255;

    // Reads "RXHORD" from the ROM.
    BootControllerList();

    // The position of the first record naming this controller; kUnranked
    // when none does.
    unsigned char rank(const unsigned char& bus, const unsigned char& device,
                       const unsigned char& function, const unsigned int& subsystemID) const;

private:
    static const unsigned kRecords = 32;
    static const unsigned kRecordSize = 8;

    unsigned char m_records[kRecords * kRecordSize];
};

} // namespace Collection

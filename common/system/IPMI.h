#pragma once

namespace Common
{

// The management controller, reached with IPMI requests through the Linux
// IPMI driver's character device. Construct one per operation: the
// constructor opens the device, loading the driver's modules and creating
// the device node when no node opens (up to 6 seconds on a machine without
// a controller); the destructor closes it. Every request goes to the
// controller's system interface; nothing is retried and nothing throws.
class IPMI
{
public:
#pragma pack(push, 1)
    // Request and response records of the typed execute; every response
    // begins with the completion code.
    // Parameter 5 (the boot flags) takes five data bytes: a standard
    // controller refuses a shorter request with C7h and keeps its old flags.
    struct _SET_BOOT_FLAGS
    {
        unsigned char parameter;
        unsigned char data[5];
    };
    struct _REQUEST_BOOT_FLAGS
    {
        unsigned char parameter;
        unsigned char set;
        unsigned char block;
    };
    struct _GET_BOOT_FLAGS
    {
        unsigned char completionCode;
        unsigned char version;
        unsigned char parameter;
        unsigned char data[4];
    };
    struct _SET_CHASSIS_CONTROL
    {
        unsigned char control;
    };
    struct _COMPLETION_CODE_RESPONSE
    {
        unsigned char completionCode;
    };
#pragma pack(pop)

    IPMI();
    virtual ~IPMI();
    IPMI(IPMI const&) = delete;
    IPMI& operator=(IPMI const&) = delete;

    // One exchange: sends `requestLength` bytes of `request` (none when 0) as
    // `netfn`/`cmd` to `lun`, waits up to 5 seconds for the reply and copies
    // at most `responseLength` of its bytes into `response` (a shorter reply
    // leaves the rest of `response` as it was). True when the request was
    // accepted and a reply arrived, whatever its completion code: check
    // response[0]. Replies are not matched to requests: one exchange per
    // object at a time.
    bool execute(unsigned char netfn, unsigned char cmd, unsigned char lun,
                 const unsigned char* request, const unsigned char& requestLength,
                 unsigned char* response, const unsigned char& responseLength);
    // LUN 0.
    bool execute(unsigned char netfn, unsigned char cmd, const unsigned char* request,
                 const unsigned char& requestLength, unsigned char* response,
                 const unsigned char& responseLength);
    // LUN 0; `received` is the number of reply bytes copied into `response`
    // (completion code included): read no byte of `response` at or beyond it.
    bool execute(unsigned char netfn, unsigned char cmd, const unsigned char* request,
                 const unsigned char& requestLength, unsigned char* response,
                 const unsigned char& responseLength, unsigned char& received);
    // LUN 0 with the records' sizes as the lengths.
    template <class Request, class Response>
    bool execute(unsigned char netfn, unsigned char cmd, const Request& request, Response& response)
    {
        static_assert(sizeof(Request) < 256 && sizeof(Response) < 256, "records fit a byte length");
        const unsigned char requestLength = sizeof(Request);
        const unsigned char responseLength = sizeof(Response);
        return execute(netfn, cmd, reinterpret_cast<const unsigned char*>(&request), requestLength,
                       reinterpret_cast<unsigned char*>(&response), responseLength);
    }

    // The controller answers Get Device ID with completion code 0. Only a
    // true answer is kept for the process: a false one asks again next time.
    static bool supported();

private:
    // Runs the driver's module loading and device-node commands, then waits
    // 3 seconds for the device to appear.
    static void loadDriver();
    bool exchange(unsigned char netfn, unsigned char cmd, unsigned char lun,
                  const unsigned char* request, const unsigned char& requestLength,
                  unsigned char* response, const unsigned char& responseLength,
                  unsigned char& copied);
    static int openDevice();

    int m_device;
};

static_assert(sizeof(IPMI::_SET_BOOT_FLAGS) == 6, "wire layout");
static_assert(sizeof(IPMI::_REQUEST_BOOT_FLAGS) == 3, "wire layout");
static_assert(sizeof(IPMI::_GET_BOOT_FLAGS) == 7, "wire layout");
static_assert(sizeof(IPMI::_SET_CHASSIS_CONTROL) == 1, "wire layout");
static_assert(sizeof(IPMI::_COMPLETION_CODE_RESPONSE) == 1, "wire layout");

} // namespace Common

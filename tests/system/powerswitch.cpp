#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/fanotify.h>
#include <sys/inotify.h>
#include <sys/types.h>
#include <unistd.h>

// powerswitch written FILE [PROCESS]   when the file is next written to, the process, if one is
// named,
//                                      being stopped first
// powerswitch closed FILE              when it is next closed by whoever has written to it
// powerswitch opened FILE              when it is next opened
// powerswitch read FILE                when it is next read; the reader gets nothing any more
//
// Prints "ready" when it watches, and then cuts the guest's power at that moment.

namespace {

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

void sayReady()
{
    std::puts("ready");
    std::fflush(stdout);
}

void cutPower()
{
    const int power = open("/dev/virtio-ports/power", O_WRONLY | O_CLOEXEC);
    if (power < 0 || write(power, "cut\n", 4) != 4)
        fail("power");
    pause();
}

void await(const char *file, uint32_t event)
{
    const int watch = inotify_init1(IN_CLOEXEC);
    if (watch < 0 || inotify_add_watch(watch, file, event) < 0)
        fail(file);
    sayReady();
    char events[4096];
    if (read(watch, events, sizeof events) <= 0)
        fail(file);
}

// The reader waits for a permission that never comes.
void holdReader(const char *file)
{
    const int watch = fanotify_init(FAN_CLASS_CONTENT | FAN_CLOEXEC, O_RDONLY | O_CLOEXEC);
    if (watch < 0 || fanotify_mark(watch, FAN_MARK_ADD, FAN_ACCESS_PERM, AT_FDCWD, file) != 0)
        fail(file);
    sayReady();
    char events[4096];
    if (read(watch, events, sizeof events) <= 0)
        fail(file);
}

} // namespace

int main(int argc, char **argv)
{
    const std::string event = argc > 2 ? argv[1] : "";
    if (event == "written") {
        await(argv[2], IN_MODIFY);
        const int process = argc > 3 ? std::atoi(argv[3]) : 0;
        if (argc > 3 && (process <= 0 || kill(process, SIGSTOP) != 0))
            fail(argv[3]);
    } else if (event == "closed") {
        await(argv[2], IN_CLOSE_WRITE);
    } else if (event == "opened") {
        await(argv[2], IN_OPEN);
    } else if (event == "read") {
        holdReader(argv[2]);
    } else {
        return 2;
    }
    cutPower();
    return 0;
}

// Every system call of this room goes through a table, so that a test can make any of them fail.
// Each concern has a table and a source of its own: a program that only maps files is linked with
// no call that starts processes or opens sockets.
#pragma once

#include <dirent.h>
#include <glob.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <utime.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <ctime>

namespace OSAPI {

/// The bytes of files.
struct FileCalls {
    int (*open)(const char* path, int flags, mode_t permissions);
    int (*close)(int fd);
    ssize_t (*read)(int fd, void* buffer, std::size_t count);
    ssize_t (*pread)(int fd, void* buffer, std::size_t count, off_t offset);
    ssize_t (*write)(int fd, const void* buffer, std::size_t count);
    ssize_t (*pwrite)(int fd, const void* buffer, std::size_t count, off_t offset);
    int (*fstat)(int fd, struct stat* out);
    off_t (*lseek)(int fd, off_t offset, int whence);
    int (*ftruncate)(int fd, off_t size);
    int (*fsync)(int fd);
    void (*sync)();
};

/// What paths name, and where they start from.
struct PathCalls {
    int (*stat)(const char* path, struct stat* out);
    int (*rename)(const char* from, const char* to);
    int (*unlink)(const char* path);
    int (*access)(const char* path, int what);
    int (*utime)(const char* path, const utimbuf* times);
    char* (*getcwd)(char* buffer, std::size_t size);
    int (*chdir)(const char* path);
    int (*glob)(const char* pattern, int flags, int (*on_error)(const char*, int), glob_t* out);
};

/// What is in directories.
struct DirectoryCalls {
    DIR* (*opendir)(const char* path);
    dirent* (*readdir)(DIR* directory);
    int (*closedir)(DIR* directory);
};

/// Mapped and locked memory.
struct MappingCalls {
    void* (*mmap)(void* where, std::size_t size, int protection, int flags, int fd, off_t offset);
    int (*munmap)(void* addr, std::size_t size);
    int (*mlock)(const void* addr, std::size_t size);
    int (*munlock)(const void* addr, std::size_t size);
};

/// Processes and signals.
struct ProcessCalls {
    pid_t (*fork)();
    int (*execvp)(const char* file, char* const* argv);
    pid_t (*waitpid)(pid_t pid, int* status, int options);
    int (*kill)(pid_t pid, int sig);
    int (*sched_yield)();
    int (*pause)();
    unsigned int (*sleep)(unsigned int seconds);
    int (*setpgid)(pid_t pid, pid_t group);
    int (*die_with_parent)();  ///< by SIGTERM; `ENOSYS` where there is no such thing
    int (*become_reaper)();    ///< of orphaned descendants; `ENOSYS` where there is no such thing
    int (*sigaction)(int sig, const struct ::sigaction* action, struct ::sigaction* previous);
    uid_t (*geteuid)();
};

/// Descriptors of all kinds.
struct DescriptorCalls {
    int (*fcntl)(int fd, int command, int argument);
    int (*ioctl)(int fd, unsigned long request, char* argument);
    int (*isatty)(int fd);
    int (*dup)(int fd);
    int (*dup2)(int fd, int to);
    int (*pipe)(int* ends);
    int (*mknod)(const char* path, mode_t mode, dev_t device);
    int (*poll)(pollfd* descriptors, nfds_t count, int timeout);
    std::FILE* (*fdopen)(int fd, const char* mode);
    int (*fclose)(std::FILE* file);
};

/// Sockets, and names of hosts.
struct SocketCalls {
    int (*socket)(int family, int type, int protocol);
    int (*setsockopt)(int fd, int level, int name, const void* value, socklen_t size);
    int (*bind)(int fd, const sockaddr* address, socklen_t size);
    int (*listen)(int fd, int backlog);
    int (*accept)(int fd, sockaddr* address, socklen_t* size);
    int (*connect)(int fd, const sockaddr* address, socklen_t size);
    hostent* (*gethostbyname)(const char* name);
    int (*gethostname)(char* name, std::size_t size);
};

/// Clocks.
struct ClockCalls {
    int (*gettimeofday)(timeval* now);
    std::time_t (*time)(std::time_t* now);
};

/// The table of a concern in use: the system's own calls unless a test has replaced some.
template <class Table>
Table& calls();
template <>
FileCalls& calls();
template <>
PathCalls& calls();
template <>
DirectoryCalls& calls();
template <>
MappingCalls& calls();
template <>
ProcessCalls& calls();
template <>
DescriptorCalls& calls();
template <>
SocketCalls& calls();
template <>
ClockCalls& calls();

}  // namespace OSAPI

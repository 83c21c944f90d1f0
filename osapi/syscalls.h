// Every system call of this room goes through one table, so that a test can make any of them fail.
#pragma once

#include <dirent.h>
#include <glob.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <utime.h>

#include <cstddef>

namespace OSAPI {

struct Syscalls {
    int (*open)(const char* path, int flags, mode_t permissions);
    int (*close)(int fd);
    ssize_t (*read)(int fd, void* buffer, std::size_t count);
    ssize_t (*pread)(int fd, void* buffer, std::size_t count, off_t offset);
    ssize_t (*write)(int fd, const void* buffer, std::size_t count);
    ssize_t (*pwrite)(int fd, const void* buffer, std::size_t count, off_t offset);
    int (*fstat)(int fd, struct stat* out);
    int (*stat)(const char* path, struct stat* out);
    off_t (*lseek)(int fd, off_t offset, int whence);
    int (*ftruncate)(int fd, off_t size);
    int (*fsync)(int fd);
    void (*sync)();
    int (*rename)(const char* from, const char* to);
    int (*unlink)(const char* path);
    int (*access)(const char* path, int what);
    void* (*mmap)(void* where, std::size_t size, int protection, int flags, int fd, off_t offset);
    int (*munmap)(void* addr, std::size_t size);
    int (*mlock)(const void* addr, std::size_t size);
    int (*munlock)(const void* addr, std::size_t size);
    DIR* (*opendir)(const char* path);
    dirent* (*readdir)(DIR* directory);
    int (*closedir)(DIR* directory);
    char* (*getcwd)(char* buffer, std::size_t size);
    int (*chdir)(const char* path);
    int (*utime)(const char* path, const utimbuf* times);
    int (*glob)(const char* pattern, int flags, int (*on_error)(const char*, int), glob_t* out);
};

/// The table in use: the system's own calls unless a test has replaced some.
Syscalls& syscalls();

}  // namespace OSAPI

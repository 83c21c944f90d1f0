#include <support/failing_allocator.h>

#include <cstdint>
#include <limits>
#include <new>

namespace {

constexpr unsigned int kMostRecorded = 256;

// Plain numbers: what decides about an allocation must not allocate.
bool watching = false;
std::size_t largest_granted = SIZE_MAX;
std::size_t recorded[kMostRecorded];
unsigned int recorded_count = 0;

struct Budget {
    bool is_limited = false;
    unsigned int left = 0;

    bool spend() { return !is_limited || (left > 0 && left-- > 0); }
};
Budget larger, grants, news;

bool granted(std::size_t size) {
    if (!watching) {
        return true;
    }
    if (recorded_count < kMostRecorded) {
        recorded[recorded_count++] = size;
    }
    return (size <= largest_granted || larger.spend()) && grants.spend();
}

void* new_or_throw(std::size_t size, void* (*real_new)(std::size_t)) {
    if (watching && !news.spend()) {
        throw std::bad_alloc();
    }
    return real_new(size);
}

}  // namespace

FailingAllocator::FailingAllocator() {
    grant_all();
    recorded_count = 0;
    watching = true;
}

FailingAllocator::~FailingAllocator() { watching = false; }

void FailingAllocator::refuse_above(std::size_t largest, unsigned int granted) {
    largest_granted = largest;
    larger = {true, granted};
}

void FailingAllocator::refuse_after(unsigned int count) { grants = {true, count}; }

void FailingAllocator::refuse_new_after(unsigned int count) { news = {true, count}; }

void FailingAllocator::grant_all() {
    largest_granted = SIZE_MAX;
    larger = grants = news = {};
}

std::vector<std::size_t> FailingAllocator::requests() const {
    return std::vector<std::size_t>(recorded, recorded + recorded_count);
}

extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* block, std::size_t size);

void* __wrap_malloc(std::size_t size) { return granted(size) ? __real_malloc(size) : nullptr; }

void* __wrap_calloc(std::size_t count, std::size_t size) {
    const bool fits = size == 0 || count <= std::numeric_limits<std::size_t>::max() / size;
    return granted(fits ? count * size : SIZE_MAX) ? __real_calloc(count, size) : nullptr;
}

void* __wrap_realloc(void* block, std::size_t size) {
    return granted(size) ? __real_realloc(block, size) : nullptr;
}
}

// The compilers' names of `operator new` end in that of the type `std::size_t`.
#define JOINED(a, b) a##b
#define OF_SIZE(name, letter) JOINED(name, letter)
#define NEW_OBJECT(prefix) OF_SIZE(prefix##_Znw, SIZE_LETTER)
#define NEW_ARRAY(prefix) OF_SIZE(prefix##_Zna, SIZE_LETTER)

extern "C" {
void* NEW_OBJECT(__real_)(std::size_t size);
void* NEW_ARRAY(__real_)(std::size_t size);

void* NEW_OBJECT(__wrap_)(std::size_t size) { return new_or_throw(size, NEW_OBJECT(__real_)); }
void* NEW_ARRAY(__wrap_)(std::size_t size) { return new_or_throw(size, NEW_ARRAY(__real_)); }
}

#include <support/failing_allocator.h>

#include <cstdint>
#include <limits>

namespace {

constexpr unsigned int kMostRecorded = 256;

// Plain numbers: what decides about an allocation must not allocate.
bool watching = false;
std::size_t largest_granted = SIZE_MAX;
unsigned int grants_left = 0;
bool counting_grants = false;
std::size_t recorded[kMostRecorded];
unsigned int recorded_count = 0;

bool granted(std::size_t size) {
    if (!watching) {
        return true;
    }
    if (recorded_count < kMostRecorded) {
        recorded[recorded_count++] = size;
    }
    if (size > largest_granted) {
        return false;
    }
    if (counting_grants) {
        if (grants_left == 0) {
            return false;
        }
        --grants_left;
    }
    return true;
}

}  // namespace

FailingAllocator::FailingAllocator() {
    grant_all();
    recorded_count = 0;
    watching = true;
}

FailingAllocator::~FailingAllocator() { watching = false; }

void FailingAllocator::refuse_above(std::size_t largest) { largest_granted = largest; }

void FailingAllocator::refuse_after(unsigned int count) {
    counting_grants = true;
    grants_left = count;
}

void FailingAllocator::grant_all() {
    largest_granted = SIZE_MAX;
    counting_grants = false;
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

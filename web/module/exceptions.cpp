// The run-time side of C++ exceptions on WebAssembly's own, which Debian's libraries are built without: what
// the compiler calls at a throw and in front of a handler. A handler takes exactly its own type, or every
// one; one exception is under way at a time.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <typeinfo>

namespace {

struct Header {
    const std::type_info *type;
    void (*destroy)(void *);
    int handlers;
};

constexpr size_t kHeader = 16;  // keeps what follows aligned
static_assert(sizeof(Header) <= kHeader);

alignas(16) char reserve[256];  // for the exception that says that memory is short
void *caught = nullptr;

Header &header_of(void *exception) {
    return *reinterpret_cast<Header *>(static_cast<char *>(exception) - kHeader);
}

void release(void *exception) {
    char *memory = static_cast<char *>(exception) - kHeader;
    if (memory != reserve) std::free(memory);
}

// The compiler's tables (Itanium C++ ABI, exception handling; LEB128 numbers).
uint32_t unsigned_number(const uint8_t *&p) {
    uint32_t value = 0;
    for (unsigned shift = 0;; shift += 7) {
        const uint8_t byte = *p++;
        value |= static_cast<uint32_t>(byte & 0x7F) << shift;
        if (byte < 0x80) return value;
    }
}

int32_t signed_number(const uint8_t *&p) {
    const uint8_t *first = p;
    const uint32_t value = unsigned_number(p);
    const unsigned bits = 7 * static_cast<unsigned>(p - first);
    const bool is_negative = bits < 32 && (p[-1] & 0x40) != 0;
    return static_cast<int32_t>(is_negative ? value | ~uint32_t{0} << bits : value);
}

// Which of the handlers of a place takes a type: its number in the table of types, 0 for none.
int32_t handler_for(const std::type_info &type, const uint8_t *table, uint32_t place) {
    const uint8_t *p = table + 2;  // behind the encodings of starts (none) and types (pointers)
    const uint32_t types_size = unsigned_number(p);
    const auto *types_end = reinterpret_cast<const std::type_info *const *>(p + types_size);
    p++;  // the encoding of places
    const uint32_t places_size = unsigned_number(p);
    const uint8_t *actions = p + places_size;
    uint32_t action = 0;
    for (uint32_t i = 0; i <= place; i++) {
        unsigned_number(p);  // the place's number
        action = unsigned_number(p);
    }
    if (action == 0) return 0;
    for (const uint8_t *step = actions + action - 1;;) {
        const int32_t number = signed_number(step);
        const uint8_t *link = step;
        const int32_t next = signed_number(step);
        if (number > 0) {
            const std::type_info *handled = types_end[-number];
            if (!handled || *handled == type) return number;
        }
        if (next == 0) return 0;
        step = link + next;
    }
}

}  // namespace

extern "C" {

// Set by the code in front of a handler.
struct {
    uint32_t place;
    const uint8_t *table;
    int32_t handler;
} __wasm_lpad_context;

void *__cxa_allocate_exception(size_t size) noexcept {
    void *memory = std::malloc(kHeader + size);
    if (!memory) memory = kHeader + size <= sizeof reserve ? reserve : nullptr;
    if (!memory) std::abort();
    return static_cast<char *>(memory) + kHeader;
}

void __cxa_free_exception(void *exception) noexcept { release(exception); }

[[noreturn]] void __cxa_throw(void *exception, std::type_info *type, void (*destroy)(void *)) {
    header_of(exception) = {type, destroy, 0};
    __builtin_wasm_throw(0, exception);
}

[[noreturn]] void __cxa_rethrow() { __builtin_wasm_throw(0, caught); }

int _Unwind_CallPersonality(void *exception) {
    __wasm_lpad_context.handler =
        handler_for(*header_of(exception).type, __wasm_lpad_context.table, __wasm_lpad_context.place);
    return 0;
}

// The compiler names it in what it makes; nobody calls it.
int __gxx_wasm_personality_v0(void *) { return 0; }

void *__cxa_begin_catch(void *exception) noexcept {
    caught = exception;
    header_of(exception).handlers++;
    return exception;
}

void __cxa_end_catch() {
    if (!caught || --header_of(caught).handlers > 0) return;
    if (header_of(caught).destroy) header_of(caught).destroy(caught);
    release(caught);
    caught = nullptr;
}

}  // extern "C"

// The library's own would abort.
void *operator new(size_t size) {
    if (void *memory = std::malloc(size ? size : 1)) return memory;
    throw std::bad_alloc();
}
void *operator new[](size_t size) { return operator new(size); }

#pragma once

#include "nimbit/ui/event_info.h"
#include "nimbit/utils/flat_map.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace nimbit::ui {

class event_object;

// The process-wide publish/subscribe registry. Callbacks are attached to a source object and an event
// type, and listed under an owner (the object whose member function is bound) so that the owner can
// drop all of them at once. UI thread only.
//
// Dispatch runs on a snapshot of the callback list: a callback may add or remove registrations or
// destroy objects (including the source) without changing which callbacks run in that dispatch.
class event_manager {
public:
    using callback = std::function<void(const event_info&)>;

    static event_manager& instance();

    // Appends `fn` to the source's list for `type` and returns its id. Ids start at 0 and are never
    // reused while the process lives.
    uint32_t add_event(event_object* source, void* owner, event_type type, callback fn);

    // Binds a member function of `owner`.
    template <typename T>
    uint32_t add_event(event_object* source, T* owner, event_type type,
                       void (T::*method)(const event_info&)) {
        // Kept as object, method and a plain thunk: binding a member needs no allocation.
        using method_type = void (T::*)(const event_info&);
        static_assert(sizeof(method_type) <= sizeof(member_call::method));
        member_call call;
        call.object = static_cast<void*>(owner);
        std::memcpy(call.method, &method, sizeof(method_type));
        call.invoke = [](const member_call& c, const event_info& e) {
            method_type m;
            std::memcpy(&m, c.method, sizeof(method_type));
            (static_cast<T*>(c.object)->*m)(e);
        };
        return add_member_event(source, static_cast<void*>(owner), type, call);
    }

    // Removes one callback; unknown or already removed ids are ignored. The id stays listed under its
    // owner (a later remove_events skips it).
    void remove_event(uint32_t id);

    // Removes every registration owned by `object`, then every callback attached to it as source.
    void remove_events(event_object* object);

    // True when the source has a list for the type (even an empty one); the callbacks cannot consume
    // an event, only the presence of a list is reported.
    bool fire_event(event_object* source, event_type type, unsigned long long data) {
        return fire_event(source, type, event_state::normal, event_agent::user, data);
    }
    bool fire_event(event_object* source, event_type type, event_state state, unsigned long long data) {
        return fire_event(source, type, state, event_agent::user, data);
    }
    bool fire_event(event_object* source, event_type type, event_state state, event_agent agent,
                    unsigned long long data);

    bool has_event(event_object* source, event_type type) const;

    // Number of sources with a handler table, and of ids listed under an owner; let tests check that
    // nothing is left behind.
    size_t source_count() const { return handlers_.size(); }
    size_t owned_id_count(void* owner) const;

    event_manager(const event_manager&) = delete;
    event_manager& operator=(const event_manager&) = delete;

    // A bound member function: the object, the member pointer's bytes and a thunk that calls it.
    struct member_call {
        void* object = nullptr;
        void (*invoke)(const member_call&, const event_info&) = nullptr;
        alignas(8) unsigned char method[16] = {};
    };

private:
    event_manager();
    ~event_manager();

    uint32_t add_member_event(event_object* source, void* owner, event_type type, const member_call& call);

    // A registered callback. Shared between its source's list and any running dispatch that took a
    // snapshot of it; returned to the pool when the last of them lets go (single-threaded count).
    struct node {
        callback fn;
        member_call member;
        uint32_t id = 0;
        event_type type = event_type::none;
        uint32_t refs = 0;
        node* next_free = nullptr;
    };
    // One list per source holds the callbacks of every type in registration order: sources carry a
    // handful of callbacks, so filtering by type beats a second hash level. Which types have a list
    // (possibly emptied) is kept as a bit set on the source itself.
    using source_table = small_vector<node*, 4>;
    struct registration {
        event_object* source = nullptr;
        event_type type = event_type::none;
    };
    template <typename K, typename V> using map = flat_map<K, V>;

    node* acquire();
    void release(node* n);
    uint32_t add_node(event_object* source, void* owner, event_type type, node* n);

    // Nodes are pooled: a rebuild of a list registers and drops thousands of them.
    std::vector<std::unique_ptr<node[]>> node_blocks_;
    node* free_nodes_ = nullptr;

    map<event_object*, source_table> handlers_;
    map<uint32_t, registration> registrations_;
    // Ids stay listed under their owner after remove_event; a long-lived owner that registers on
    // short-lived sources (a list on its rows) would grow without end, so the list sheds ids that are
    // no longer registered whenever it has doubled.
    struct owned_ids {
        small_vector<uint32_t, 4> ids;
        size_t compact_at = 64;
    };
    map<void*, owned_ids> owners_;
    uint32_t next_id_ = 0;
};

} // namespace nimbit::ui

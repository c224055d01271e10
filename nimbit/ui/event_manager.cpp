#include "nimbit/ui/event_manager.h"

#include "nimbit/ui/event_object.h"

#include <algorithm>

namespace nimbit::ui {

namespace {
constexpr uint64_t type_bit(event_type type) {
    const auto v = static_cast<uint32_t>(type);
    return v < 64 ? uint64_t{1} << v : 0;
}

bool listened(const event_object* source, event_type type, uint64_t mask) {
    return source && (mask & type_bit(type)) != 0;
}

constexpr size_t node_block_size = 256;
} // namespace

event_manager& event_manager::instance() {
    // Built on first use and never destroyed: objects that die during exit still unregister safely.
    static event_manager* manager = new event_manager();
    return *manager;
}

event_manager::event_manager() = default;

event_manager::~event_manager() = default;

event_manager::node* event_manager::acquire() {
    if (!free_nodes_) {
        auto block = std::make_unique<node[]>(node_block_size);
        for (size_t i = 0; i < node_block_size; ++i)
            block[i].next_free = i + 1 < node_block_size ? &block[i + 1] : nullptr;
        free_nodes_ = &block[0];
        node_blocks_.push_back(std::move(block));
    }
    node* n = free_nodes_;
    free_nodes_ = n->next_free;
    n->next_free = nullptr;
    return n;
}

void event_manager::release(node* n) {
    if (--n->refs != 0)
        return;
    // The callable goes now (what it captured is released as it would be on delete).
    callback dropped = std::move(n->fn);
    n->fn = nullptr;
    n->member = {};
    n->next_free = free_nodes_;
    free_nodes_ = n;
}

uint32_t event_manager::add_event(event_object* source, void* owner, event_type type, callback fn) {
    node* n = acquire();
    n->fn = std::move(fn);
    return add_node(source, owner, type, n);
}

uint32_t event_manager::add_member_event(event_object* source, void* owner, event_type type,
                                         const member_call& call) {
    node* n = acquire();
    n->member = call;
    return add_node(source, owner, type, n);
}

uint32_t event_manager::add_node(event_object* source, void* owner, event_type type, node* n) {
    const uint32_t id = next_id_++;
    n->id = id;
    n->type = type;
    n->refs = 1;
    handlers_[source].push_back(n);
    if (source)
        source->listened_types |= type_bit(type);
    registrations_[id] = registration{source, type};
    owned_ids& owned = owners_[owner];
    if (owned.ids.size() >= owned.compact_at) {
        owned.ids.erase_if([this](uint32_t old) { return !registrations_.contains(old); });
        owned.compact_at = std::max<size_t>(64, owned.ids.size() * 2);
    }
    owned.ids.push_back(id);
    return id;
}

size_t event_manager::owned_id_count(void* owner) const {
    const owned_ids* owned = owners_.find(owner);
    return owned ? owned->ids.size() : 0;
}

void event_manager::remove_event(uint32_t id) {
    const registration* reg = registrations_.find(id);
    if (!reg)
        return;
    const registration r = *reg;
    registrations_.erase(id);
    source_table* nodes = handlers_.find(r.source);
    if (!nodes)
        return;
    // Matched by id, not by address: a pooled node's address is reused.
    node** it = std::find_if(nodes->begin(), nodes->end(), [id](const node* n) { return n->id == id; });
    if (it == nodes->end())
        return;
    node* n = *it;
    nodes->erase(it); // the type keeps its (now maybe empty) list: its bit stays set on the source
    release(n);
}

void event_manager::remove_events(event_object* object) {
    if (owned_ids* owned = owners_.find(object)) {
        const small_vector<uint32_t, 4> ids = std::move(owned->ids);
        owners_.erase(object);
        for (uint32_t id : ids)
            remove_event(id);
    }
    if (object)
        object->listened_types = 0;
    if (source_table* table = handlers_.find(object)) {
        const source_table dropped = std::move(*table);
        handlers_.erase(object);
        for (node* n : dropped) {
            registrations_.erase(n->id);
            release(n);
        }
    }
}

namespace {
// Holds a reference on every node of a snapshot until the dispatch ends, even when a callback throws.
template <typename Node, typename Release> struct snapshot {
    small_vector<Node*, 8> nodes;
    Release release;

    template <typename Table> snapshot(const Table& from, event_type type, Release r) : release(r) {
        for (Node* n : from)
            if (n->type == type) {
                nodes.push_back(n);
                ++n->refs;
            }
    }
    ~snapshot() {
        for (Node* n : nodes)
            release(n);
    }
    snapshot(const snapshot&) = delete;
    snapshot& operator=(const snapshot&) = delete;
};
} // namespace

bool event_manager::fire_event(event_object* source, event_type type, event_state state, event_agent agent,
                               unsigned long long data) {
    if (!listened(source, type, source ? source->listened_types : 0))
        return false;
    const source_table* table = handlers_.find(source);
    if (!table)
        return false;
    const event_info info{source, type, state, agent, data};
    auto drop = [this](node* n) {
        release(n);
    };
    snapshot<node, decltype(drop)> copy(*table, type, drop);
    for (const node* n : copy.nodes) {
        if (n->member.invoke)
            n->member.invoke(n->member, info);
        else if (n->fn)
            n->fn(info);
    }
    return true;
}

bool event_manager::has_event(event_object* source, event_type type) const {
    return listened(source, type, source ? source->listened_types : 0) && handlers_.contains(source);
}

} // namespace nimbit::ui

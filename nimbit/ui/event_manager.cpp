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
} // namespace

event_manager& event_manager::instance() {
    // Built on first use and never destroyed: objects that die during exit still unregister safely.
    static event_manager* manager = new event_manager();
    return *manager;
}

event_manager::event_manager() {
    handlers_.max_load_factor(1.0f);
    registrations_.max_load_factor(1.0f);
    owners_.max_load_factor(1.0f);
}

event_manager::~event_manager() = default;

void event_manager::release(node* n) {
    if (--n->refs == 0)
        delete n;
}

uint32_t event_manager::add_event(event_object* source, void* owner, event_type type, callback fn) {
    const uint32_t id = next_id_++;
    source_table& table = handlers_[source];
    if (table.empty())
        table.reserve(4); // a control registers a few handlers on itself: grow once, not per push
    table.push_back(new node{std::move(fn), id, type, 1});
    if (source)
        source->listened_types |= type_bit(type);
    registrations_.emplace(id, registration{source, type});
    owned_ids& owned = owners_[owner];
    if (owned.ids.size() >= owned.compact_at) {
        std::erase_if(owned.ids, [this](uint32_t old) { return registrations_.count(old) == 0; });
        owned.compact_at = std::max<size_t>(64, owned.ids.size() * 2);
    }
    owned.ids.push_back(id);
    return id;
}

size_t event_manager::owned_id_count(void* owner) const {
    auto it = owners_.find(owner);
    return it == owners_.end() ? 0 : it->second.ids.size();
}

void event_manager::remove_event(uint32_t id) {
    auto reg = registrations_.find(id);
    if (reg == registrations_.end())
        return;
    const registration r = reg->second;
    registrations_.erase(reg);
    auto table = handlers_.find(r.source);
    if (table == handlers_.end())
        return;
    auto& nodes = table->second;
    // Matched by id, not by address: a freed node's address may have been reused.
    auto it = std::find_if(nodes.begin(), nodes.end(), [id](const node* n) { return n->id == id; });
    if (it == nodes.end())
        return;
    node* n = *it;
    nodes.erase(it); // the type keeps its (now maybe empty) list: its bit stays set on the source
    release(n);
}

void event_manager::remove_events(event_object* object) {
    if (auto owned = owners_.find(object); owned != owners_.end()) {
        std::vector<uint32_t> ids = std::move(owned->second.ids);
        owners_.erase(owned);
        for (uint32_t id : ids)
            remove_event(id);
    }
    if (object)
        object->listened_types = 0;
    if (auto table = handlers_.find(object); table != handlers_.end()) {
        source_table dropped = std::move(table->second);
        handlers_.erase(table);
        for (node* n : dropped) {
            registrations_.erase(n->id);
            release(n);
        }
    }
}

namespace {
// Holds a reference on every node of a snapshot until the dispatch ends, even when a callback throws.
template <typename Node, typename Release> struct snapshot {
    static constexpr size_t inline_capacity = 8;
    Node* inline_nodes[inline_capacity];
    std::vector<Node*> heap_nodes;
    Node** nodes = inline_nodes;
    size_t count = 0;
    Release release;

    snapshot(const std::vector<Node*>& from, event_type type, Release r) : release(r) {
        for (Node* n : from) {
            if (n->type != type)
                continue;
            if (count == inline_capacity && heap_nodes.empty()) {
                heap_nodes.assign(inline_nodes, inline_nodes + count);
                nodes = nullptr;
            }
            if (heap_nodes.empty())
                inline_nodes[count] = n;
            else
                heap_nodes.push_back(n);
            ++count;
            ++n->refs;
        }
        if (!heap_nodes.empty())
            nodes = heap_nodes.data();
    }
    ~snapshot() {
        for (size_t i = 0; i < count; ++i)
            release(nodes[i]);
    }
    snapshot(const snapshot&) = delete;
    snapshot& operator=(const snapshot&) = delete;
};
} // namespace

bool event_manager::fire_event(event_object* source, event_type type, event_state state, event_agent agent,
                               unsigned long long data) {
    if (!listened(source, type, source ? source->listened_types : 0))
        return false;
    auto table = handlers_.find(source);
    if (table == handlers_.end())
        return false;
    const event_info info{source, type, state, agent, data};
    snapshot copy(table->second, type, &event_manager::release);
    for (size_t i = 0; i < copy.count; ++i)
        if (copy.nodes[i]->fn)
            copy.nodes[i]->fn(info);
    return true;
}

bool event_manager::has_event(event_object* source, event_type type) const {
    return listened(source, type, source ? source->listened_types : 0) && handlers_.count(source) != 0;
}

} // namespace nimbit::ui

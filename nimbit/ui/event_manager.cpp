#include "nimbit/ui/event_manager.h"

#include <algorithm>

namespace nimbit::ui {

event_manager& event_manager::instance() {
    // Built on first use and destroyed at exit; objects destroyed during exit after it would find it
    // gone, so it is deliberately never destroyed (static storage, no destructor run).
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

event_manager::type_list* event_manager::find_list(source_table& table, event_type type) {
    for (auto& list : table)
        if (list.type == type)
            return &list;
    return nullptr;
}

uint32_t event_manager::add_event(event_object* source, void* owner, event_type type, callback fn) {
    const uint32_t id = next_id_++;
    auto& table = handlers_[source];
    type_list* list = find_list(table, type);
    if (!list)
        list = &table.emplace_back(type_list{type, {}});
    list->nodes.push_back(new node{std::move(fn), id, 1});
    registrations_.emplace(id, registration{source, type});
    owners_[owner].push_back(id);
    return id;
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
    type_list* list = find_list(table->second, r.type);
    if (!list)
        return;
    // Matched by id, not by address: a freed node's address may have been reused.
    auto it =
        std::find_if(list->nodes.begin(), list->nodes.end(), [id](const node* n) { return n->id == id; });
    if (it == list->nodes.end())
        return;
    node* n = *it;
    list->nodes.erase(it); // the list itself stays, even when empty
    release(n);
}

void event_manager::remove_events(event_object* object) {
    if (auto owned = owners_.find(object); owned != owners_.end()) {
        // Move the ids out first: nothing below runs callbacks, but keep the loop independent of the map.
        std::vector<uint32_t> ids = std::move(owned->second);
        owners_.erase(owned);
        for (uint32_t id : ids)
            remove_event(id);
    }
    if (auto table = handlers_.find(object); table != handlers_.end()) {
        source_table dropped = std::move(table->second);
        handlers_.erase(table);
        for (auto& list : dropped)
            for (node* n : list.nodes) {
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

    snapshot(const std::vector<Node*>& from, Release r) : count(from.size()), release(r) {
        if (count > inline_capacity) {
            heap_nodes = from;
            nodes = heap_nodes.data();
        } else {
            std::copy(from.begin(), from.end(), inline_nodes);
        }
        for (size_t i = 0; i < count; ++i)
            ++nodes[i]->refs;
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
    auto table = handlers_.find(source);
    if (table == handlers_.end())
        return false;
    type_list* list = find_list(table->second, type);
    if (!list)
        return false;
    const event_info info{source, type, state, agent, data};
    snapshot copy(list->nodes, &event_manager::release);
    for (size_t i = 0; i < copy.count; ++i)
        if (copy.nodes[i]->fn)
            copy.nodes[i]->fn(info);
    return true;
}

bool event_manager::has_event(event_object* source, event_type type) const {
    auto table = handlers_.find(source);
    if (table == handlers_.end())
        return false;
    for (const auto& list : table->second)
        if (list.type == type)
            return true;
    return false;
}

} // namespace nimbit::ui

#include <ixocore/app/document.h>

#include <ixocore/app/archive.h>
#include <ixocore/app/command_manager.h>
#include <ixocore/app/document_object.h>
#include <ixocore/events/event.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_object.h>
#include <ixocore/scene/selection.h>
#include <ixocore/tools/tool_manager.h>

#include <iterator>

ixo_document::ixo_document()
{
    command_manager_ = ixo_command_manager::create();
    tool_manager_ = ixo_tool_manager::create();
    scene_ = ixo_scene::create();
    selection_ = ixo_selection::create();
}

ixo_document::~ixo_document()
{
    // Commands hold scene objects: the history goes first. The tool stack is cleared
    // between the history and the tree.
    command_manager_->clear_all();
    tool_manager_->clear_all_tools();
    scene_->get_root()->remove_all_children();
    selection_->remove_all();
    command_manager_ = nullptr;
    tool_manager_ = nullptr;
    scene_ = nullptr;
    selection_ = nullptr;
    // The objects go with the map, without on_remove.
}

ixo_object_ptr<ixo_command_manager> ixo_document::get_command_manager()
{
    return command_manager_;
}

ixo_object_ptr<ixo_scene> ixo_document::get_scene()
{
    return scene_;
}

ixo_object_ptr<ixo_tool_manager> ixo_document::get_tool_manager()
{
    return tool_manager_;
}

ixo_object_ptr<ixo_selection> ixo_document::get_selection()
{
    return selection_;
}

void ixo_document::report(doc_event_type what)
{
    ixo_object_ptr<ixo_event_manager> const manager = ixo_event_manager::get_app_event_manager();
    if (!manager)
        return;
    switch (what)
    {
    case doc_changing:
        manager->report(ixo_event_document_changing::create(this));
        break;
    case doc_changed:
        manager->report(ixo_event_document_changed::create(this));
        break;
    }
}

bool ixo_document::add(ixo_object_ptr<ixo_document_object> obj)
{
    if (!obj)
        return false;
    report(doc_changing);
    bool const inserted = objects_[obj->type()].insert(obj).second;
    obj->on_add(this);
    report(doc_changed);
    return inserted;
}

bool ixo_document::remove(ixo_object_ptr<ixo_document_object> obj)
{
    if (!obj)
        return false;
    report(doc_changing);
    bool removed = false;
    auto const of_type = objects_.find(obj->type());
    if (of_type != objects_.end())
    {
        removed = of_type->second.erase(obj) != 0;
        if (of_type->second.empty())
            objects_.erase(of_type);
        obj->on_remove(this);
    }
    report(doc_changed);
    return removed;
}

void ixo_document::clear()
{
    report(doc_changing);
    // Walked over a snapshot: an on_remove hook may change the map.
    std::vector<ixo_object_ptr<ixo_document_object>> all;
    for (auto const& [type, set] : objects_)
        all.insert(all.end(), set.begin(), set.end());
    for (auto const& obj : all)
        obj->on_remove(this);
    // Moved out first: releasing an object may run code that looks at this document.
    std::map<unsigned long, object_set> old = std::move(objects_);
    objects_.clear();
    old.clear();
    report(doc_changed);
}

void ixo_document::get_objects_of_type(unsigned long type,
                                       std::vector<ixo_object_ptr<ixo_document_object>>& out) const
{
    auto const of_type = objects_.find(type);
    if (of_type != objects_.end())
        out.insert(out.end(), of_type->second.begin(), of_type->second.end());
}

unsigned long ixo_document::get_first_type()
{
    return objects_.empty() ? ixo_invalid_object_type : objects_.begin()->first;
}

unsigned long ixo_document::get_next_type(unsigned long type)
{
    auto it = objects_.find(type);
    if (it == objects_.end() || ++it == objects_.end())
        return ixo_invalid_object_type;
    return it->first;
}

ixo_object_ptr<ixo_document_object> ixo_document::get_first_object_of_type(unsigned long type)
{
    auto const of_type = objects_.find(type);
    if (of_type == objects_.end() || of_type->second.empty())
        return nullptr;
    return *of_type->second.begin();
}

ixo_object_ptr<ixo_document_object>
ixo_document::get_next_object_of_type(ixo_object_ptr<ixo_document_object> obj)
{
    if (!obj)
        return nullptr;
    auto const of_type = objects_.find(obj->type());
    if (of_type == objects_.end())
        return nullptr;
    auto it = of_type->second.find(obj);
    if (it == of_type->second.end() || ++it == of_type->second.end())
        return nullptr;
    return *it;
}

ixo_string const& ixo_document::get_file_name() const
{
    return file_name_;
}

void ixo_document::set_file_name(ixo_string const& name)
{
    file_name_ = name;
}

bool ixo_document::save(ixo_object_ptr<ixo_archive> archive)
{
    return save_packets(std::move(archive), 0);
}

bool ixo_document::save_packets(ixo_object_ptr<ixo_archive> archive, int)
{
    // No document file format is defined yet: nothing is written.
    return archive != nullptr;
}

bool ixo_document::load(ixo_object_ptr<ixo_archive> archive)
{
    return archive != nullptr;
}

bool ixo_document::is_modified() const
{
    return modified_;
}

void ixo_document::set_modified(bool modified)
{
    modified_ = modified;
}

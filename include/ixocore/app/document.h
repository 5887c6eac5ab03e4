#pragma once
// ixo_document: one model. Owns its selection (and, as they exist, its undo history, tool
// stack and scene) and keeps its document objects indexed by type. Every change of the
// object set is bracketed by one document-changing and one document-changed event.

#include <ixocore/core/api.h>
#include <ixocore/core/object.h>
#include <ixocore/core/object_ptr.h>
#include <ixocore/core/string.h>

#include <map>
#include <set>
#include <vector>

class ixo_application;
class ixo_archive;
class ixo_command_manager;
class ixo_document_object;
class ixo_scene;
class ixo_selection;
class ixo_tool_manager;

class IXO_API ixo_document : public ixo_object
{
public:
    // The document's undo history.
    virtual ixo_object_ptr<ixo_command_manager> get_command_manager();
    // The document's scene.
    virtual ixo_object_ptr<ixo_scene> get_scene();
    // The document's tool stack; the host gives mouse input to its active tool.
    virtual ixo_object_ptr<ixo_tool_manager> get_tool_manager();
    // The document's selection.
    virtual ixo_object_ptr<ixo_selection> get_selection();

    // Adds `obj` under its type and calls its on_add (also when it was there already);
    // true when it was not there before. A null pointer answers false without events.
    virtual bool add(ixo_object_ptr<ixo_document_object> obj);
    // Removes `obj` and calls its on_remove whenever its type is present (also when `obj`
    // itself is not); true when it was there. A null pointer answers false without events.
    virtual bool remove(ixo_object_ptr<ixo_document_object> obj);
    // Calls on_remove on every object, in type order, then drops them all.
    virtual void clear();
    // Appends the objects of type `type` (in address order) to `out`, which is not cleared.
    virtual void get_objects_of_type(unsigned long type,
                                     std::vector<ixo_object_ptr<ixo_document_object>>& out) const;
    // The smallest type number present, or ixo_invalid_object_type when there is none.
    virtual unsigned long get_first_type();
    // The next larger type present after `type`; ixo_invalid_object_type when `type` is the
    // last or is not present.
    virtual unsigned long get_next_type(unsigned long type);
    // The first object of type `type` in address order, or null.
    virtual ixo_object_ptr<ixo_document_object> get_first_object_of_type(unsigned long type);
    // The object after `obj` among those of its type, or null when `obj` is the last or is
    // not in the document.
    virtual ixo_object_ptr<ixo_document_object>
    get_next_object_of_type(ixo_object_ptr<ixo_document_object> obj);
    // The name the host gave the document; the document never opens a file by itself.
    virtual ixo_string const& get_file_name() const;
    virtual void set_file_name(ixo_string const& name);
    // Visits the objects and answers true: the document has no file format of its own yet.
    // False for a null archive.
    virtual bool save(ixo_object_ptr<ixo_archive> archive);
    // Reads nothing and answers true; false for a null archive.
    virtual bool load(ixo_object_ptr<ixo_archive> archive);
    // A flag kept for the host; no operation of the document changes it.
    virtual bool is_modified() const;
    virtual void set_modified(bool modified);

private:
    friend class ixo_application;

    enum doc_event_type
    {
        doc_changing = 0,
        doc_changed = 1,
    };
    using object_set = std::set<ixo_object_ptr<ixo_document_object>>;

    ixo_document();
    ~ixo_document() override;

    // Raises the changing or changed event for this document.
    void report(doc_event_type what);
    bool save_packets(ixo_object_ptr<ixo_archive> archive, int packets);

    ixo_object_ptr<ixo_command_manager> command_manager_;
    ixo_object_ptr<ixo_tool_manager> tool_manager_;
    ixo_object_ptr<ixo_scene> scene_;
    ixo_object_ptr<ixo_selection> selection_;
    // A type is present only while it has objects.
    std::map<unsigned long, object_set> objects_;
    ixo_string file_name_;
    bool modified_ = false;
};

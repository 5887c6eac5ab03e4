#include <ixocore/app/application.h>

#include <ixocore/app/document.h>
#include <ixocore/events/event_manager.h>
#include <ixocore/render/direct3d.h>
#include <ixocore/render/render_view_manager.h>
#include <ixocore/render/resource_manager.h>
#include <ixocore/scene/scene.h>

ixo_application* ixo_application::m_instance = nullptr;

ixo_application::ixo_application()
{
    event_manager_ = ixo_event_manager::create();
    render_view_manager_ = ixo_object_ptr<ixo_render_view_manager>(new ixo_render_view_manager);
    resource_manager_ = ixo_resource_manager::create();
}

ixo_application::~ixo_application()
{
    event_manager_->unsubscribe_all();
    // Moved out first: a document's destruction reports through the event manager and must
    // not find a half-emptied set.
    std::set<ixo_object_ptr<ixo_document>> documents = std::move(documents_);
    documents_.clear();
    documents.clear();
    event_manager_ = nullptr;
    render_view_manager_ = nullptr;
    resource_manager_ = nullptr;
    direct3d_ = nullptr;
}

ixo_start_code ixo_application::start(HWND window)
{
    if (m_instance)
    {
        ++m_instance->start_count_;
        return ixo_start_success;
    }
    m_instance = new ixo_application;
    m_instance->start_count_ = 1;
    ixo_start_code code = ixo_start_success;
    // The application stays also when the device reports a failure.
    m_instance->direct3d_ = ixo_direct3d::create(window, code);
    return code;
}

void ixo_application::end()
{
    if (!m_instance || --m_instance->start_count_ > 0)
        return;
    delete m_instance;
    m_instance = nullptr;
}

ixo_application* ixo_application::instance()
{
    return m_instance;
}

ixo_object_ptr<ixo_document> ixo_application::create_document()
{
    ixo_object_ptr<ixo_document> doc(new ixo_document);
    documents_.insert(doc);
    return doc;
}

bool ixo_application::remove_document(ixo_object_ptr<ixo_document> doc)
{
    return documents_.erase(doc) != 0;
}

void ixo_application::pre_reset()
{
    for (const ixo_object_ptr<ixo_document>& doc : documents_)
        if (ixo_object_ptr<ixo_scene> scene = doc->get_scene())
            scene->pre_reset();
    if (render_view_manager_)
        render_view_manager_->pre_reset();
}

void ixo_application::post_reset()
{
    for (const ixo_object_ptr<ixo_document>& doc : documents_)
        if (ixo_object_ptr<ixo_scene> scene = doc->get_scene())
            scene->post_reset();
    if (render_view_manager_)
        render_view_manager_->post_reset();
}

ixo_object_ptr<ixo_event_manager> ixo_application::get_event_manager()
{
    return event_manager_;
}

ixo_object_ptr<ixo_render_view_manager> ixo_application::get_render_view_manager()
{
    return render_view_manager_;
}

ixo_object_ptr<ixo_resource_manager> ixo_application::get_resource_manager()
{
    return resource_manager_;
}

ixo_object_ptr<ixo_direct3d> ixo_application::get_direct3d()
{
    return direct3d_;
}

#include <ixocore/app/application.h>

#include <ixocore/app/document.h>
#include <ixocore/events/event_manager.h>

ixo_application* ixo_application::m_instance = nullptr;

ixo_application::ixo_application()
{
    event_manager_ = ixo_event_manager::create();
    // The render-view manager and then the resource manager are created here once they
    // exist.
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
    // The render-view manager, the resource manager and the graphics device are released
    // here, in that order, once they exist.
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
    // The graphics device is created here for `window` once it exists; its start code is
    // what start answers, and the application stays also when it reports a failure.
    static_cast<void>(window);
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
    // Each document's scene (in set order) and then the render-view manager release their
    // device resources here once they exist.
}

void ixo_application::post_reset()
{
    // Each document's scene (in set order) and then the render-view manager rebuild their
    // device resources here once they exist.
}

ixo_object_ptr<ixo_event_manager> ixo_application::get_event_manager()
{
    return event_manager_;
}

#include "object_types.h"

namespace ixo_scene_file
{
const std::vector<object_type>& object_types()
{
    static const std::vector<object_type> types = []
    {
        std::vector<object_type> t;
        add_primitive_types(t);
        add_mesh_types(t);
        add_annotation_types(t);
        return t;
    }();
    return types;
}

const object_type* find_object_type(const std::string& name)
{
    for (const object_type& t : object_types())
        if (t.name == name)
            return &t;
    return nullptr;
}
} // namespace ixo_scene_file

#pragma once
// A scene object for tests: it has a box of its own, logs its draw_object calls and reset
// hooks, can be told to fail, and counts its destruction.

#include <ixocore/ixocore.h>

#include <string>
#include <vector>

struct probe_log
{
    std::vector<std::string> entries;
    int destroyed = 0;

    std::string take()
    {
        std::string s;
        for (const auto& e : entries)
            s += (s.empty() ? "" : " ") + e;
        entries.clear();
        return s;
    }
};

class probe : public ixo_scene_object
{
public:
    static ixo_object_ptr<probe> create(probe_log& log, std::string name,
                                        ixo_box3<float> box = ixo_box3<float>())
    {
        return new probe(log, std::move(name), box);
    }

    ixo_box3<float> get_object_bounds() const override { return box_; }
    bool draw_object(const ixo_scene_draw_data& d) override
    {
        log_.entries.push_back(name_ + (d.do_background()    ? "/b"
                                        : d.do_transparent() ? "/t"
                                                             : "/f"));
        return draw_answer;
    }
    bool pre_reset_object() override
    {
        log_.entries.push_back("pre " + name_);
        return reset_answer;
    }
    bool post_reset_object() override
    {
        log_.entries.push_back("post " + name_);
        return reset_answer;
    }

    bool draw_answer = true;
    bool reset_answer = true;

private:
    probe(probe_log& log, std::string name, ixo_box3<float> box)
        : log_(log), name_(std::move(name)), box_(box)
    {
    }
    ~probe() override { ++log_.destroyed; }

    probe_log& log_;
    std::string name_;
    ixo_box3<float> box_;
};

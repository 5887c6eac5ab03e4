#pragma once
// A scene object for tests: it has a box of its own, logs its draw_object calls and reset
// hooks, can be told to fail, and counts its destruction. And comparisons of points and
// boxes within a tolerance.

#include <ixocore/ixocore.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace ixo_test
{
inline ::testing::AssertionResult near(const ixo_vector3<float>& a, const ixo_vector3<float>& b,
                                       float tolerance = 1e-5f)
{
    for (int i = 0; i < 3; ++i)
        if (!(std::fabs(a[i] - b[i]) <= tolerance))
            return ::testing::AssertionFailure()
                   << "(" << a[0] << ", " << a[1] << ", " << a[2] << "), expected (" << b[0] << ", "
                   << b[1] << ", " << b[2] << ")";
    return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult box_is(const ixo_box3<float>& b, const ixo_vector3<float>& lo,
                                         const ixo_vector3<float>& hi, float tolerance = 1e-5f)
{
    if (auto r = near(b.minimum(), lo, tolerance); !r)
        return r << " at the minimum";
    if (auto r = near(b.maximum(), hi, tolerance); !r)
        return r << " at the maximum";
    return ::testing::AssertionSuccess();
}
} // namespace ixo_test

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

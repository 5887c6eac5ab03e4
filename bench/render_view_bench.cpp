// Frames and picks of a headless 640 × 480 render view over scenes of 10, 1,000 and 10,000
// small boxes in a cubic grid. Reports the time per frame (paint, or map plus one pick)
// and the time per object, so the growth with the scene's size is visible.

#include <ixocore/app/application.h>
#include <ixocore/math/matrix.h>
#include <ixocore/render/render_view.h>
#include <ixocore/render/render_view_manager.h>
#include <ixocore/scene/scene.h>
#include <ixocore/scene/scene_box.h>
#include <ixocore/scene/scene_object.h>

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace
{
// The library started headless with one view over `count` boxes; ended on destruction.
struct bench_scene
{
    explicit bench_scene(int count)
    {
        ok = ixo_application::start(nullptr) == ixo_start_success;
        if (!ok)
            return;
        scene = ixo_scene::create();
        int const side = static_cast<int>(std::ceil(std::cbrt(double(count))));
        for (int i = 0; i < count; ++i)
        {
            auto box = ixo_scene_box::create(0.8f, 0.8f, 0.8f);
            box->set_color(ixo_vector4<unsigned char>(static_cast<unsigned char>(40 + i % 200), 120,
                                                      200, 255));
            box->set_transform(ixo_translation_transform(ixo_vector3<float>(
                float(i % side), float(i / side % side), float(i / (side * side)))));
            scene->get_root()->add_child(box);
        }
        view = ixo_render_view_manager::get_app_render_view_manager()->create();
        ok = view->initialize(nullptr, 640, 480, scene);
    }
    ~bench_scene()
    {
        view = nullptr;
        scene = nullptr;
        ixo_application::end();
    }

    bool ok = false;
    ixo_object_ptr<ixo_scene> scene;
    ixo_object_ptr<ixo_render_view> view;
};

void report(benchmark::State& state, int count)
{
    // Time per object: iterations × count per second, inverted.
    state.counters["per_object"] = benchmark::Counter(
        double(count), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void paint(benchmark::State& state)
{
    int const count = static_cast<int>(state.range(0));
    bench_scene s(count);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    // Headless, Present only flushes: over many frames the device cannot run far ahead,
    // so this is the frame rate a host would see. paint_and_capture waits for every frame.
    for (auto _ : state)
        s.view->paint();
    report(state, count);
}

void paint_and_capture(benchmark::State& state)
{
    int const count = static_cast<int>(state.range(0));
    bench_scene s(count);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    std::vector<ixo_vector4<unsigned char>> pixels;
    for (auto _ : state)
    {
        s.view->paint();
        s.view->capture(pixels);
    }
    report(state, count);
}

void map_and_pick(benchmark::State& state)
{
    int const count = static_cast<int>(state.range(0));
    bench_scene s(count);
    if (!s.ok)
    {
        state.SkipWithError("no headless device");
        return;
    }
    unsigned long found = 0;
    for (auto _ : state)
    {
        s.view->map();
        s.view->pick_lock();
        found += s.view->pick(ixo_vector2<int>(320, 240));
        s.view->pick_unlock();
    }
    benchmark::DoNotOptimize(found);
    report(state, count);
}

BENCHMARK(paint)->Arg(10)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(paint_and_capture)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(map_and_pick)
    ->Arg(10)
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
} // namespace

BENCHMARK_MAIN();

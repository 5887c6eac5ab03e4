#pragma once
// A record of device states that the sprite and line helpers change and put back.

#include <ixocore/platform/d3d9.h>

#include <initializer_list>
#include <utility>
#include <vector>

class ixo_d3dx_state_block
{
public:
    // Reads the listed states, the FVF and texture 0 from the device.
    void capture(IDirect3DDevice9* device, std::initializer_list<D3DRENDERSTATETYPE> states,
                 std::initializer_list<D3DTEXTURESTAGESTATETYPE> stage0,
                 std::initializer_list<D3DSAMPLERSTATETYPE> sampler0)
    {
        release();
        device_ = device;
        for (auto s : states)
        {
            DWORD v = 0;
            if (SUCCEEDED(device->GetRenderState(s, &v)))
                render_.emplace_back(s, v);
        }
        for (auto s : stage0)
        {
            DWORD v = 0;
            if (SUCCEEDED(device->GetTextureStageState(0, s, &v)))
                stage_.emplace_back(s, v);
        }
        for (auto s : sampler0)
        {
            DWORD v = 0;
            if (SUCCEEDED(device->GetSamplerState(0, s, &v)))
                sampler_.emplace_back(s, v);
        }
        if (FAILED(device->GetFVF(&fvf_)))
            fvf_ = 0;
        if (FAILED(device->GetTexture(0, &texture_)))
            texture_ = nullptr;
        captured_ = true;
    }

    // Puts the captured states back and forgets them.
    void restore()
    {
        if (!captured_)
            return;
        for (auto& [s, v] : render_)
            device_->SetRenderState(s, v);
        for (auto& [s, v] : stage_)
            device_->SetTextureStageState(0, s, v);
        for (auto& [s, v] : sampler_)
            device_->SetSamplerState(0, s, v);
        if (fvf_ != 0)
            device_->SetFVF(fvf_);
        device_->SetTexture(0, texture_);
        release();
    }

    ~ixo_d3dx_state_block() { release(); }

private:
    void release()
    {
        if (texture_ != nullptr)
            texture_->Release();
        texture_ = nullptr;
        render_.clear();
        stage_.clear();
        sampler_.clear();
        captured_ = false;
    }

    IDirect3DDevice9* device_ = nullptr;
    bool captured_ = false;
    std::vector<std::pair<D3DRENDERSTATETYPE, DWORD>> render_;
    std::vector<std::pair<D3DTEXTURESTAGESTATETYPE, DWORD>> stage_;
    std::vector<std::pair<D3DSAMPLERSTATETYPE, DWORD>> sampler_;
    DWORD fvf_ = 0;
    IDirect3DBaseTexture9* texture_ = nullptr;
};

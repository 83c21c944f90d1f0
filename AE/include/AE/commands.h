// The host's commands: one function each, and the table that leads to them.
//
// Each returns a host status, 0 for success. `params` and `output` are the host's; the handlers
// that do not name them do not read them.
#pragma once

#include <host_api/effect_interface.h>

/// Carries out one command of the host; the exported entry point is this function.
///
/// Returns the handler's status, 0 for commands the effect does not answer, and the number that was
/// thrown when the host lacks a suite. Other exceptions pass through: handlers that can meet one
/// catch it themselves, except for a plug-in directory that cannot be listed.
PF_Err dispatch_command(PF_Cmd cmd, PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                        PF_LayerDef* output, void* extra);

/// Puts the effect's name and version into the host's message buffer; Premiere shows no about box.
PF_Err About(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[], PF_LayerDef* output);
/// Declares version and flags and finds the star databases beside the bundle.
PF_Err GlobalSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                   PF_LayerDef* output);
/// Closes the open database and forgets the others.
PF_Err GlobalSetdown(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                     PF_LayerDef* output);
/// Declares the controls.
PF_Err ParamsSetup(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                   PF_LayerDef* output);
/// Answers hosts without smart rendering: a test ramp in 16 bits, a flat colour otherwise, no
/// stars.
PF_Err Render(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[], PF_LayerDef* output);
/// Leaves a host handle with a text in the second pointer-sized slot of the record `extra`, as its
/// first 32-bit word asks; or null there. Always returns 0.
PF_Err DescribeDependencies(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                            void* extra);
/// Tells the host that the frame depends on the composition's camera and lights.
PF_Err QueryDynamicFlags(PF_InData* in_data, PF_OutData* out_data, PF_ParamDef* params[],
                         void* extra);
/// Takes the snapshot of controls and cameras and declares the output's area.
PF_Err SmartPreRender(PF_InData* in_data, PF_OutData* out_data, PF_PreRenderExtra* extra);
/// Draws the snapshot's frame into the host's output.
PF_Err SmartRender(PF_InData* in_data, PF_OutData* out_data, PF_SmartRenderExtra* extra);

#pragma once

// Names of the run-time codec modules. Tests point them at a module that does not exist to see
// the behaviour of a machine without the codec.
namespace hs {
namespace codec {

/// Base name of the AMR-NB codec module ("opencore-amrnb"); null restores the default.
void SetAmrNbModuleName(const char* base);
const char* AmrNbModuleName();

/// Base name of the AAC decoder module ("M4aacDec"); null restores the default.
void SetAacModuleName(const char* base);
const char* AacModuleName();

}  // namespace codec
}  // namespace hs

// SPDX-License-Identifier: ISC
#include "plugin/FactoryPresets.h"

#include "plugin/parameters/ParameterIndex.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>

namespace qlx::plugin {

namespace {

constexpr std::array<float, presets::kNumPresetParameters> kDefaultValues = {
    0.0F,      0.0F,      0.0F,      0.0F, 0.0F, 0.5F, 0.5F,      0.5F,     0.501063F,
    0.5F,      0.25F,     0.500008F, 0.5F, 0.5F, 0.0F, 0.508422F, 0.0F,     0.0673F,
    0.677088F, 0.395142F, 0.447158F, 0.5F, 0.0F, 0.5F, 0.0931F,   0.65282F, 0.759256F,
    0.831378F, 0.0F,      1.0F,      0.5F, 0.5F, 0.5F, 0.5F,      0.5F,     1.0F};

/// A value in which a preset differs from the default one.
struct Difference {
  ParameterIndex index;
  float value;
};

struct FactoryPreset {
  const char* name;
  std::span<const Difference> differences;
};

constexpr Difference kB147[] = {
    {kBottom, 0.4F},     {kLoMid, 0.3F},      {kPresence, 0.5F},   {kTop, 0.4F},
    {kSetup, 0.1F},      {kInput, 0.6F},      {kType, 1.0F},       {kDrive, 0.4F},
    {kSize, 0.75F},      {kColor, 0.8F},      {kAmount, 0.5F},     {kHSlowSpd, 0.073F},
    {kHFastSpd, 0.722F}, {kHAccel, 0.48F},    {kHDecel, 0.5F},     {kHDistance, 0.2F},
    {kHHPF, 0.7F},       {kDSlowSpd, 0.067F}, {kDFastSpd, 0.688F}, {kDAccel, 0.75F},
    {kDDecel, 0.75F},    {kDDistance, 0.1F},  {kDLPF, 0.35F},      {kDGain, 0.4F}};

constexpr Difference kOldRotary[] = {
    {kMech, 0.52F},       {kPresence, 0.537063F},  {kTop, 0.3F},           {kSetup, 0.405556F},
    {kInput, 0.5F},       {kDrive, 0.6F},          {kSize, 1.0F},          {kColor, 0.7F},
    {kAmount, 0.7F},      {kHSlowSpd, 0.0998F},    {kHFastSpd, 0.636088F}, {kHAccel, 0.478324F},
    {kHDecel, 0.520696F}, {kHDistance, 0.504297F}, {kHHPF, 0.624453F},     {kHGain, 0.46F},
    {kDSlowSpd, 0.0716F}, {kDFastSpd, 0.53132F},   {kDDecel, 0.731198F},   {kDDistance, 0.564F},
    {kDLPF, 0.892F}};

constexpr Difference kRelaxed[] = {
    {kBottom, 0.2F},  {kPresence, 0.5F},  {kTop, 0.2F},        {kSetup, 0.4F},
    {kInput, 0.5F},   {kDrive, 0.35F},    {kSize, 1.0F},       {kColor, 0.2F},
    {kAmount, 0.4F},  {kHSlowSpd, 0.11F}, {kHFastSpd, 0.592F}, {kHAccel, 0.5F},
    {kHDecel, 0.6F},  {kHDistance, 0.7F}, {kDSlowSpd, 0.093F}, {kDFastSpd, 0.573F},
    {kDAccel, 0.67F}, {kDDecel, 0.8F},    {kDDistance, 0.5F},  {kDGain, 0.3F}};

constexpr Difference kWobble[] = {
    {kBottom, 0.4F},    {kPresence, 0.3F},  {kTop, 0.4F},     {kSetup, 0.4F},  {kInput, 0.5F},
    {kType, 1.0F},      {kDrive, 0.4F},     {kSize, 0.7F},    {kColor, 0.5F},  {kAmount, 0.3F},
    {kHSlowSpd, 0.11F}, {kHFastSpd, 0.59F}, {kHAccel, 0.5F},  {kHDecel, 0.6F}, {kHDistance, 0.7F},
    {kDSlowSpd, 0.2F},  {kDFastSpd, 0.31F}, {kDAccel, 0.67F}, {kDDecel, 0.8F}, {kDDistance, 0.5F},
    {kDGain, 0.3F}};

constexpr Difference kRamble[] = {
    {kPresence, 0.6F},   {kTop, 0.4F},     {kSetup, 0.6F},  {kInput, 0.5F},     {kType, 1.0F},
    {kDrive, 0.4F},      {kSize, 0.5F},    {kColor, 0.0F},  {kAmount, 0.7F},    {kHSlowSpd, 0.11F},
    {kHFastSpd, 0.31F},  {kHAccel, 0.5F},  {kHDecel, 0.6F}, {kHDistance, 0.7F}, {kDSlowSpd, 0.2F},
    {kDFastSpd, 0.592F}, {kDAccel, 0.67F}, {kDDecel, 0.8F}, {kDDistance, 0.5F}, {kDGain, 0.3F}};

constexpr Difference kSynchro[] = {
    {kBottom, 0.4F},   {kPresence, 0.5F}, {kTop, 0.4F},    {kSetup, 0.6F},     {kInput, 0.5F},
    {kType, 0.0F},     {kSize, 0.7F},     {kColor, 0.5F},  {kAmount, 0.3F},    {kHSlowSpd, 0.1F},
    {kHFastSpd, 0.6F}, {kHAccel, 0.5F},   {kHDecel, 0.5F}, {kHDistance, 0.7F}, {kDSlowSpd, 0.1F},
    {kDFastSpd, 0.6F}, {kDAccel, 0.5F},   {kDDecel, 0.5F}, {kDDistance, 0.5F}, {kDGain, 0.3F}};

constexpr Difference kSwift[] = {
    {kBottom, 0.4F},     {kPresence, 0.5F}, {kTop, 0.4F},    {kSetup, 0.6F},     {kInput, 0.5F},
    {kType, 0.0F},       {kSize, 0.7F},     {kColor, 0.5F},  {kAmount, 0.3F},    {kHSlowSpd, 0.08F},
    {kHFastSpd, 0.685F}, {kHAccel, 0.0F},   {kHDecel, 0.0F}, {kHDistance, 0.7F}, {kDSlowSpd, 0.1F},
    {kDFastSpd, 0.6F},   {kDAccel, 0.0F},   {kDDecel, 0.0F}, {kDDistance, 0.5F}, {kDGain, 0.3F}};

constexpr Difference kFullMoon[] = {
    {kLoMid, 0.54F},      {kPresence, 0.560891F}, {kTop, 0.624F},          {kSetup, 0.627778F},
    {kInput, 0.5F},       {kType, 0.664F},        {kDrive, 0.6F},          {kSize, 0.392F},
    {kColor, 1.0F},       {kAmount, 0.5F},        {kHSlowSpd, 0.085F},     {kHFastSpd, 0.67F},
    {kHAccel, 0.556971F}, {kHDecel, 0.451816F},   {kHDistance, 0.279828F}, {kHHPF, 0.572F},
    {kDSlowSpd, 0.6391F}, {kDFastSpd, 0.10132F},  {kDAccel, 0.615224F},    {kDDecel, 0.53959F},
    {kDDistance, 0.092F}, {kDLPF, 0.7368F}};

constexpr Difference kLight[] = {
    {kBottom, 0.353022F},   {kLoMid, 0.415703F},  {kPresence, 0.624501F}, {kSetup, 0.366667F},
    {kInput, 0.5F},         {kSize, 0.292F},      {kAmount, 0.292F},      {kHFastSpd, 0.674088F},
    {kHAccel, 0.475668F},   {kHDecel, 0.475668F}, {kHHPF, 0.5F},          {kDSlowSpd, 0.0925F},
    {kDFastSpd, 0.577715F}, {kDAccel, 0.671211F}, {kDDecel, 0.671211F},   {kDDistance, 0.5F},
    {kDLPF, 0.3504F}};

constexpr Difference kLazyHorn[] = {
    {kPresence, 0.537063F}, {kSetup, 0.133334F},  {kInput, 0.5F},          {kSize, 0.5F},
    {kColor, 0.508034F},    {kAmount, 0.38F},     {kHSlowSpd, 0.0305F},    {kHFastSpd, 0.519465F},
    {kHAccel, 0.615224F},   {kHDecel, 0.615224F}, {kDSlowSpd, 0.0655316F}, {kDFastSpd, 0.66132F},
    {kDAccel, 0.573063F},   {kDDecel, 0.671211F}, {kDDistance, 0.232F}};

constexpr Difference kBrokenHornMotor[] = {
    {kDrive, 0.45F},        {kSize, 0.452F},      {kAmount, 0.38F},     {kHSlowSpd, 0.0F},
    {kHFastSpd, 0.0F},      {kHAccel, 0.475668F}, {kHDecel, 0.475668F}, {kDSlowSpd, 0.0316F},
    {kDFastSpd, 0.661299F}, {kDAccel, 0.671211F}, {kDDecel, 0.671211F}, {kDDistance, 0.232F}};

constexpr Difference kMellowDrum[] = {
    {kInput, 0.337608F},    {kDrive, 0.45F},       {kSize, 0.464F},      {kAmount, 0.38F},
    {kHFastSpd, 0.633588F}, {kHAccel, 0.475668F},  {kHDecel, 0.475668F}, {kHDistance, 0.888F},
    {kDSlowSpd, 0.0321F},   {kDFastSpd, 0.30782F}, {kDAccel, 0.671211F}, {kDDecel, 0.671211F},
    {kDDistance, 0.5F},     {kDLPF, 0.3536F},      {kDGain, 0.732223F}};

constexpr Difference kStaticDrum[] = {
    {kInput, 0.337608F},  {kSize, 0.464F},      {kAmount, 0.38F},     {kHFastSpd, 0.681088F},
    {kHAccel, 0.475668F}, {kHDecel, 0.475668F}, {kHDistance, 0.888F}, {kDSlowSpd, 0.0F},
    {kDFastSpd, 0.0F},    {kDAccel, 0.671211F}, {kDDecel, 0.671211F}, {kDDistance, 0.5F},
    {kDLPF, 0.3536F},     {kDGain, 0.732223F}};

constexpr Difference kHornMics[] = {
    {kBottom, 0.0F},        {kLoMid, 0.4F},       {kPresence, 0.6F},      {kSetup, 0.366667F},
    {kInput, 0.4F},         {kDrive, 0.57F},      {kSize, 0.292F},        {kAmount, 0.292F},
    {kHFastSpd, 0.674088F}, {kHAccel, 0.475668F}, {kHDecel, 0.475668F},   {kHDistance, 1.0F},
    {kHHPF, 0.3F},          {kDSlowSpd, 0.0925F}, {kDFastSpd, 0.578215F}, {kDAccel, 0.671211F},
    {kDDecel, 0.671211F},   {kDDistance, 0.5F},   {kDLPF, 0.3504F},       {kDGain, 0.0F}};

constexpr Difference kSingleMic[] = {
    {kLoMid, 0.624F},     {kSetup, 1.0F},       {kInput, 0.337608F},  {kSize, 0.464F},
    {kAmount, 0.2152F},   {kHFastSpd, 0.654F},  {kHAccel, 0.475668F}, {kHDecel, 0.475668F},
    {kHDistance, 0.888F}, {kHHPF, 0.228F},      {kDSlowSpd, 0.093F},  {kDFastSpd, 0.5785F},
    {kDAccel, 0.671211F}, {kDDecel, 0.671211F}, {kDDistance, 0.5F},   {kDLPF, 0.3496F},
    {kDGain, 0.0F}};

constexpr FactoryPreset kSounds[] = {
    {"Default", {}},
    {"B'122", {}},
    {"B'147", kB147},
    {"Old Rotary", kOldRotary},
    {"Relaxed", kRelaxed},
    {"Wobble", kWobble},
    {"Ramble", kRamble},
    {"Synchro", kSynchro},
    {"Swift", kSwift},
    {"Full Moon", kFullMoon},
    {"Light", kLight},
    {"Lazy Horn", kLazyHorn},
    {"Broken Horn Motor", kBrokenHornMotor},
    {"Mellow Drum", kMellowDrum},
    {"Static Drum", kStaticDrum},
    {"Horn Mics", kHornMics},
    {"Single Mic", kSingleMic},
};

constexpr FactoryPreset kNeutral = {"Init", {}};

presets::PresetSlot slotOf(const FactoryPreset& preset) {
  presets::PresetSlot slot;
  slot.setNameText(preset.name);
  slot.values = kDefaultValues;
  for (const Difference& difference : preset.differences) {
    slot.values[static_cast<std::size_t>(difference.index)] = difference.value;
  }
  return slot;
}

} // namespace

std::array<presets::PresetSlot, presets::kNumPresetSlots> factoryPresets() {
  std::array<presets::PresetSlot, presets::kNumPresetSlots> bank;
  bank.fill(slotOf(kNeutral));
  std::transform(std::begin(kSounds), std::end(kSounds), bank.begin(), slotOf);
  return bank;
}

} // namespace qlx::plugin

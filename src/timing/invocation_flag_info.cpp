// Opcode-name classification into execution units. The tests are deliberately
// coarse substring matches over the ISA's naming scheme; their over-matches
// (e.g. every 64-bit vector op counting as transcendental) are part of the
// timing model.
#include "timing/invocation_flag_info.h"

#include "util/string_helpers.h"

namespace vesk {

bool InvocationFlagInfo::IsVectorInstruction() const {
  return StartsWith(name_, "v_");
}

bool InvocationFlagInfo::IsScalarInstruction() const {
  return StartsWith(name_, "s_");
}

bool InvocationFlagInfo::IsSALUInvocation() const {
  if (!IsScalarInstruction())
    return false;
  if (!ContainsAny(name_,
                   {"s_add", "_sub_", "_subb", "_abs",   "_min",  "_max", "_cselect", "s_or",
                    "s_xor", "s_and", "_nand", "s_nor",  "_xnor", "_lsh", "_ashr",    "_bf",
                    "_mul",  "_pack", "mov",   "s_cmp",  "reg",   "_not", "_wqm",     "_quadmask",
                    "_brev", "_bcnt", "_ff",   "_flbit", "_sext", "_bit", "_mode"})) {
    return false;
  }
  // Matches "_and" but is a debugger branch, not an ALU operation.
  return name_ != "s_cbranch_cdbgsys_and_user";
}

bool InvocationFlagInfo::IsSMEMInvocation() const {
  if (StartsWith(name_, "scratch_"))
    return true;
  return IsScalarInstruction() &&
         ContainsAny(name_, {"_dword", "_atomic", "_dcache", "_gl1", "_mem", "_waveid", "_atc"});
}

bool InvocationFlagInfo::IsVALUInvocation() const {
  return IsVectorInstruction() &&
         ContainsAny(
             name_,
             {"_mad",      "_cube",   "_bf",      "_fma",       "_lerp",  "_align",   "_min",
              "_max",      "_med",    "sad",      "_cvt",       "_div",   "_trig",    "_mul",
              "_perm",     "dot",     "_add",     "_ldexp",     "_lsh",   "_ash",     "lane",
              "bcnt",      "_interp", "_xad",     "_pack",      "_sub",   "_and",     "_or",
              "_xor",      "_xnor",   "_not",     "_mac",       "_cnd",   "_nop",     "_mov",
              "_fract",    "_trunc",  "_ceil",    "_rnd",       "_floor", "_ff",      "_frexp",
              "_clrexcp",  "_sat",    "_swap",    "_pipeflush", "_cmp",   "_rcp_f64", "_rsq_f64",
              "_sqrt_f64", "_mp_f64", "_rsq_cla", "_rcp_cla",   "_exp"});
}

bool InvocationFlagInfo::IsTransVALUInvocation() const {
  return IsVectorInstruction() &&
         ContainsAny(name_, {"v_exp", "_log", "_rcp", "sq", "_sin", "_cos", "_f64", "_i64", "_u64",
                             "_b64", "mul_lo_u32", "mul_hi_u32", "mul_hi_i32", "qsad", "swap_b32",
                             "_mov_fed", "_pipeflush", "clrexcp"});
}

bool InvocationFlagInfo::IsVMEMTexInvocation() const {
  // Ray-tracing BVH queries and resource-info queries do not go through the
  // texture sampling path.
  return StartsWithAny(name_, {"buffer_", "tbuffer_", "image_"}) &&
         !ContainsAny(name_, {"bvh", "_get_resinfo"});
}

bool InvocationFlagInfo::IsFlatInvocation() const {
  return StartsWith(name_, "flat_");
}

}  // namespace vesk

// InvocationFlagInfo: classifies an opcode by its name alone into the
// execution units it runs on (SALU, SMEM, VALU, transcendental VALU, vector
// memory texture path, flat).
#pragma once

#include <string>

namespace vesk {

class InvocationFlagInfo {
 public:
  explicit InvocationFlagInfo(const std::string& name) : name_(name) {}

  const std::string& GetName() const { return name_; }

  bool IsVectorInstruction() const;
  bool IsScalarInstruction() const;
  bool IsSALUInvocation() const;
  bool IsSMEMInvocation() const;
  bool IsVALUInvocation() const;
  bool IsTransVALUInvocation() const;
  bool IsVMEMTexInvocation() const;
  bool IsFlatInvocation() const;

 private:
  std::string name_;
};

}  // namespace vesk

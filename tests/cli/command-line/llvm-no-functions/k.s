	.amdgcn_target "amdgcn-amd-amdhsa--gfx1010"
	.text
	.amdgpu_metadata
---
amdhsa.kernels:  []
	.end_amdgpu_metadata

	.text
	.amdgcn_target "amdgcn-amd-amdhsa--gfx1010"
	.type	ké\"x,@function
ké\"x:
	v_mov_b32 v0, v1
	s_endpgm

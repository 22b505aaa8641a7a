	.amdgcn_target "amdgcn-amd-amdhsa--gfx900"
	.type	k,@function
k:
	s_cmp_lt_i32 s8, 1
	s_cbranch_scc1 .LBB0_3
.LBB0_2:
	s_endpgm
.Lfunc_end0:

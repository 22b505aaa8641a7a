	.text
	.amdgcn_target "amdgcn-amd-amdhsa--gfx1010"
	.type	first,@function
first:                                  ; @first
	s_endpgm
.Lfunc_end0:
	.type	second,@function
second:                                 ; @second
	s_setpc_b64 s[30:31]
.Lfunc_end1:

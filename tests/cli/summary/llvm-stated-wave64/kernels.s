	.text
	.amdgcn_target "amdgcn-amd-amdhsa--gfx1010"
	.amdhsa_code_object_version 5
	.protected	light                   ; -- Begin function light
	.globl	light
	.p2align	8
	.type	light,@function
light:                                  ; @light
; %bb.0:
	s_clause 0x1
	s_load_dwordx2 s[0:1], s[4:5], 0x0
	s_load_dword s2, s[4:5], 0x8
	v_mov_b32_e32 v1, 0
	v_lshl_or_b32 v0, s6, 8, v0
	v_lshlrev_b64 v[0:1], 2, v[0:1]
	s_waitcnt lgkmcnt(0)
	v_add_co_u32 v0, vcc, s0, v0
	v_add_co_ci_u32_e32 v1, vcc, s1, v1, vcc
	global_load_dword v2, v[0:1], off
	s_waitcnt vmcnt(0)
	v_fma_f32 v2, v2, s2, 1.0
	global_store_dword v[0:1], v2, off
	s_endpgm
	.section	.rodata,"a",@progbits
	.p2align	6, 0x0
	.amdhsa_kernel light
		.amdhsa_group_segment_fixed_size 0
		.amdhsa_private_segment_fixed_size 0
		.amdhsa_kernarg_size 12
		.amdhsa_user_sgpr_count 6
		.amdhsa_user_sgpr_private_segment_buffer 1
		.amdhsa_user_sgpr_dispatch_ptr 0
		.amdhsa_user_sgpr_queue_ptr 0
		.amdhsa_user_sgpr_kernarg_segment_ptr 1
		.amdhsa_user_sgpr_dispatch_id 0
		.amdhsa_user_sgpr_flat_scratch_init 0
		.amdhsa_user_sgpr_private_segment_size 0
		.amdhsa_wavefront_size32 0
		.amdhsa_uses_dynamic_stack 0
		.amdhsa_system_sgpr_private_segment_wavefront_offset 0
		.amdhsa_system_sgpr_workgroup_id_x 1
		.amdhsa_system_sgpr_workgroup_id_y 0
		.amdhsa_system_sgpr_workgroup_id_z 0
		.amdhsa_system_sgpr_workgroup_info 0
		.amdhsa_system_vgpr_workitem_id 0
		.amdhsa_next_free_vgpr 3
		.amdhsa_next_free_sgpr 7
		.amdhsa_reserve_vcc 1
		.amdhsa_reserve_flat_scratch 0
		.amdhsa_reserve_xnack_mask 1
		.amdhsa_float_round_mode_32 0
		.amdhsa_float_round_mode_16_64 0
		.amdhsa_float_denorm_mode_32 3
		.amdhsa_float_denorm_mode_16_64 3
		.amdhsa_dx10_clamp 1
		.amdhsa_ieee_mode 1
		.amdhsa_fp16_overflow 0
		.amdhsa_workgroup_processor_mode 1
		.amdhsa_memory_ordered 1
		.amdhsa_forward_progress 0
		.amdhsa_shared_vgpr_count 0
		.amdhsa_exception_fp_ieee_invalid_op 0
		.amdhsa_exception_fp_denorm_src 0
		.amdhsa_exception_fp_ieee_div_zero 0
		.amdhsa_exception_fp_ieee_overflow 0
		.amdhsa_exception_fp_ieee_underflow 0
		.amdhsa_exception_fp_ieee_inexact 0
		.amdhsa_exception_int_div_zero 0
	.end_amdhsa_kernel
	.text
.Lfunc_end0:
	.size	light, .Lfunc_end0-light
                                        ; -- End function
	.section	.AMDGPU.csdata,"",@progbits
; Kernel info:
; codeLenInByte = 88
; NumSgprs: 9
; NumVgprs: 3
; ScratchSize: 0
; MemoryBound: 0
; FloatMode: 240
; IeeeMode: 1
; LDSByteSize: 0 bytes/workgroup (compile time only)
; SGPRBlocks: 1
; VGPRBlocks: 0
; NumSGPRsForWavesPerEU: 9
; NumVGPRsForWavesPerEU: 3
; Occupancy: 20
; WaveLimiterHint : 0
; COMPUTE_PGM_RSRC2:SCRATCH_EN: 0
; COMPUTE_PGM_RSRC2:USER_SGPR: 6
; COMPUTE_PGM_RSRC2:TRAP_HANDLER: 0
; COMPUTE_PGM_RSRC2:TGID_X_EN: 1
; COMPUTE_PGM_RSRC2:TGID_Y_EN: 0
; COMPUTE_PGM_RSRC2:TGID_Z_EN: 0
; COMPUTE_PGM_RSRC2:TIDIG_COMP_CNT: 0
	.text
	.protected	matmul8                 ; -- Begin function matmul8
	.globl	matmul8
	.p2align	8
	.type	matmul8,@function
matmul8:                                ; @matmul8
; %bb.0:
	s_clause 0x1
	s_load_dwordx4 s[8:11], s[4:5], 0x0
	s_load_dwordx2 s[2:3], s[4:5], 0x10
	v_lshlrev_b32_e32 v0, 6, v0
	v_mov_b32_e32 v1, 0
	v_lshl_or_b32 v0, s6, 14, v0
	v_lshlrev_b64 v[100:101], 2, v[0:1]
	s_waitcnt lgkmcnt(0)
	v_add_co_u32 v96, vcc, s10, v100
	v_add_co_u32 v98, s[0:1], s2, v100
	v_add_co_ci_u32_e32 v97, vcc, s11, v101, vcc
	v_add_co_ci_u32_e64 v99, vcc, s3, v101, s[0:1]
	global_load_dwordx4 v[63:66], v[96:97], off
	global_load_dwordx4 v[0:3], v[98:99], off
	s_clause 0x6
	global_load_dwordx4 v[67:70], v[96:97], off offset:32
	global_load_dwordx4 v[71:74], v[96:97], off offset:64
	global_load_dwordx4 v[75:78], v[96:97], off offset:96
	global_load_dwordx4 v[79:82], v[96:97], off offset:128
	global_load_dwordx4 v[87:90], v[96:97], off offset:160
	global_load_dwordx4 v[91:94], v[96:97], off offset:192
	global_load_dwordx4 v[83:86], v[96:97], off offset:224
	s_clause 0x2
	global_load_dwordx4 v[20:23], v[98:99], off offset:16
	global_load_dwordx4 v[102:105], v[98:99], off offset:32
	global_load_dwordx4 v[106:109], v[98:99], off offset:112
	global_load_dwordx4 v[110:113], v[96:97], off offset:16
	s_waitcnt vmcnt(11)
	v_fma_f32 v40, v63, v0, 0
	v_fma_f32 v41, v63, v1, 0
	v_fma_f32 v42, v63, v2, 0
	v_fma_f32 v43, v63, v3, 0
	s_waitcnt vmcnt(10)
	v_fma_f32 v32, v67, v0, 0
	v_fma_f32 v33, v67, v1, 0
	v_fma_f32 v34, v67, v2, 0
	v_fma_f32 v35, v67, v3, 0
	s_waitcnt vmcnt(9)
	v_fma_f32 v24, v71, v0, 0
	v_fma_f32 v25, v71, v1, 0
	v_fma_f32 v26, v71, v2, 0
	v_fma_f32 v27, v71, v3, 0
	s_waitcnt vmcnt(8)
	v_fma_f32 v16, v75, v0, 0
	v_fma_f32 v17, v75, v1, 0
	v_fma_f32 v18, v75, v2, 0
	v_fma_f32 v19, v75, v3, 0
	s_waitcnt vmcnt(7)
	v_fma_f32 v12, v79, v0, 0
	v_fma_f32 v13, v79, v1, 0
	v_fma_f32 v14, v79, v2, 0
	v_fma_f32 v15, v79, v3, 0
	s_waitcnt vmcnt(6)
	v_fma_f32 v8, v87, v0, 0
	v_fma_f32 v9, v87, v1, 0
	v_fma_f32 v10, v87, v2, 0
	v_fma_f32 v11, v87, v3, 0
	s_waitcnt vmcnt(5)
	v_fma_f32 v4, v91, v0, 0
	v_fma_f32 v5, v91, v1, 0
	v_fma_f32 v6, v91, v2, 0
	v_fma_f32 v7, v91, v3, 0
	s_waitcnt vmcnt(4)
	v_fma_f32 v0, v83, v0, 0
	v_fma_f32 v1, v83, v1, 0
	v_fma_f32 v2, v83, v2, 0
	v_fma_f32 v3, v83, v3, 0
	s_waitcnt vmcnt(2)
	v_fmac_f32_e32 v40, v64, v102
	v_fmac_f32_e32 v41, v64, v103
	v_fmac_f32_e32 v42, v64, v104
	v_fmac_f32_e32 v43, v64, v105
	v_fmac_f32_e32 v32, v68, v102
	v_fmac_f32_e32 v33, v68, v103
	v_fmac_f32_e32 v34, v68, v104
	v_fmac_f32_e32 v35, v68, v105
	v_fmac_f32_e32 v24, v72, v102
	v_fmac_f32_e32 v25, v72, v103
	v_fmac_f32_e32 v26, v72, v104
	v_fmac_f32_e32 v27, v72, v105
	v_fmac_f32_e32 v16, v76, v102
	v_fmac_f32_e32 v17, v76, v103
	v_fmac_f32_e32 v18, v76, v104
	v_fmac_f32_e32 v19, v76, v105
	v_fmac_f32_e32 v12, v80, v102
	v_fmac_f32_e32 v13, v80, v103
	v_fmac_f32_e32 v14, v80, v104
	v_fmac_f32_e32 v15, v80, v105
	v_fmac_f32_e32 v8, v88, v102
	v_fmac_f32_e32 v9, v88, v103
	v_fmac_f32_e32 v10, v88, v104
	v_fmac_f32_e32 v11, v88, v105
	v_fmac_f32_e32 v4, v92, v102
	v_fmac_f32_e32 v5, v92, v103
	v_fmac_f32_e32 v6, v92, v104
	v_fmac_f32_e32 v7, v92, v105
	v_fmac_f32_e32 v0, v84, v102
	v_fmac_f32_e32 v1, v84, v103
	v_fmac_f32_e32 v2, v84, v104
	v_fmac_f32_e32 v3, v84, v105
	global_load_dwordx4 v[102:105], v[98:99], off offset:48
	v_fma_f32 v60, v63, v20, 0
	v_fma_f32 v61, v63, v21, 0
	v_fma_f32 v62, v63, v22, 0
	v_fma_f32 v63, v63, v23, 0
	v_fma_f32 v56, v67, v20, 0
	v_fma_f32 v57, v67, v21, 0
	v_fma_f32 v58, v67, v22, 0
	v_fma_f32 v59, v67, v23, 0
	v_fma_f32 v52, v71, v20, 0
	v_fma_f32 v53, v71, v21, 0
	v_fma_f32 v54, v71, v22, 0
	v_fma_f32 v55, v71, v23, 0
	v_fma_f32 v48, v75, v20, 0
	v_fma_f32 v49, v75, v21, 0
	v_fma_f32 v50, v75, v22, 0
	v_fma_f32 v51, v75, v23, 0
	v_fma_f32 v44, v79, v20, 0
	v_fma_f32 v45, v79, v21, 0
	v_fma_f32 v46, v79, v22, 0
	v_fma_f32 v47, v79, v23, 0
	v_fma_f32 v36, v87, v20, 0
	v_fma_f32 v37, v87, v21, 0
	v_fma_f32 v38, v87, v22, 0
	v_fma_f32 v39, v87, v23, 0
	v_fma_f32 v28, v91, v20, 0
	v_fma_f32 v29, v91, v21, 0
	v_fma_f32 v30, v91, v22, 0
	v_fma_f32 v31, v91, v23, 0
	v_fma_f32 v20, v83, v20, 0
	v_fma_f32 v21, v83, v21, 0
	v_fma_f32 v22, v83, v22, 0
	v_fma_f32 v23, v83, v23, 0
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v60, v64, v102
	v_fmac_f32_e32 v61, v64, v103
	v_fmac_f32_e32 v62, v64, v104
	v_fmac_f32_e32 v63, v64, v105
	v_fmac_f32_e32 v56, v68, v102
	v_fmac_f32_e32 v57, v68, v103
	v_fmac_f32_e32 v58, v68, v104
	v_fmac_f32_e32 v59, v68, v105
	v_fmac_f32_e32 v52, v72, v102
	v_fmac_f32_e32 v53, v72, v103
	v_fmac_f32_e32 v54, v72, v104
	v_fmac_f32_e32 v55, v72, v105
	v_fmac_f32_e32 v48, v76, v102
	v_fmac_f32_e32 v49, v76, v103
	v_fmac_f32_e32 v50, v76, v104
	v_fmac_f32_e32 v51, v76, v105
	v_fmac_f32_e32 v44, v80, v102
	v_fmac_f32_e32 v45, v80, v103
	v_fmac_f32_e32 v46, v80, v104
	v_fmac_f32_e32 v47, v80, v105
	v_fmac_f32_e32 v36, v88, v102
	v_fmac_f32_e32 v37, v88, v103
	v_fmac_f32_e32 v38, v88, v104
	v_fmac_f32_e32 v39, v88, v105
	v_fmac_f32_e32 v28, v92, v102
	v_fmac_f32_e32 v29, v92, v103
	v_fmac_f32_e32 v30, v92, v104
	v_fmac_f32_e32 v31, v92, v105
	v_fmac_f32_e32 v20, v84, v102
	v_fmac_f32_e32 v21, v84, v103
	v_fmac_f32_e32 v22, v84, v104
	v_fmac_f32_e32 v23, v84, v105
	global_load_dwordx4 v[102:105], v[98:99], off offset:64
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v40, v65, v102
	v_fmac_f32_e32 v41, v65, v103
	v_fmac_f32_e32 v42, v65, v104
	v_fmac_f32_e32 v43, v65, v105
	v_fmac_f32_e32 v32, v69, v102
	v_fmac_f32_e32 v33, v69, v103
	v_fmac_f32_e32 v34, v69, v104
	v_fmac_f32_e32 v35, v69, v105
	v_fmac_f32_e32 v24, v73, v102
	v_fmac_f32_e32 v25, v73, v103
	v_fmac_f32_e32 v26, v73, v104
	v_fmac_f32_e32 v27, v73, v105
	v_fmac_f32_e32 v16, v77, v102
	v_fmac_f32_e32 v17, v77, v103
	v_fmac_f32_e32 v18, v77, v104
	v_fmac_f32_e32 v19, v77, v105
	v_fmac_f32_e32 v12, v81, v102
	v_fmac_f32_e32 v13, v81, v103
	v_fmac_f32_e32 v14, v81, v104
	v_fmac_f32_e32 v15, v81, v105
	v_fmac_f32_e32 v8, v89, v102
	v_fmac_f32_e32 v9, v89, v103
	v_fmac_f32_e32 v10, v89, v104
	v_fmac_f32_e32 v11, v89, v105
	v_fmac_f32_e32 v4, v93, v102
	v_fmac_f32_e32 v5, v93, v103
	v_fmac_f32_e32 v6, v93, v104
	v_fmac_f32_e32 v7, v93, v105
	v_fmac_f32_e32 v0, v85, v102
	v_fmac_f32_e32 v1, v85, v103
	v_fmac_f32_e32 v2, v85, v104
	v_fmac_f32_e32 v3, v85, v105
	global_load_dwordx4 v[102:105], v[98:99], off offset:80
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v60, v65, v102
	v_fmac_f32_e32 v61, v65, v103
	v_fmac_f32_e32 v62, v65, v104
	v_fmac_f32_e32 v63, v65, v105
	v_fmac_f32_e32 v56, v69, v102
	v_fmac_f32_e32 v57, v69, v103
	v_fmac_f32_e32 v58, v69, v104
	v_fmac_f32_e32 v59, v69, v105
	v_fmac_f32_e32 v52, v73, v102
	v_fmac_f32_e32 v53, v73, v103
	v_fmac_f32_e32 v54, v73, v104
	v_fmac_f32_e32 v55, v73, v105
	v_fmac_f32_e32 v48, v77, v102
	v_fmac_f32_e32 v49, v77, v103
	v_fmac_f32_e32 v50, v77, v104
	v_fmac_f32_e32 v51, v77, v105
	v_fmac_f32_e32 v44, v81, v102
	v_fmac_f32_e32 v45, v81, v103
	v_fmac_f32_e32 v46, v81, v104
	v_fmac_f32_e32 v47, v81, v105
	v_fmac_f32_e32 v36, v89, v102
	v_fmac_f32_e32 v37, v89, v103
	v_fmac_f32_e32 v38, v89, v104
	v_fmac_f32_e32 v39, v89, v105
	v_fmac_f32_e32 v28, v93, v102
	v_fmac_f32_e32 v29, v93, v103
	v_fmac_f32_e32 v30, v93, v104
	v_fmac_f32_e32 v31, v93, v105
	v_fmac_f32_e32 v20, v85, v102
	v_fmac_f32_e32 v21, v85, v103
	v_fmac_f32_e32 v22, v85, v104
	v_fmac_f32_e32 v23, v85, v105
	global_load_dwordx4 v[102:105], v[98:99], off offset:96
	v_fmac_f32_e32 v60, v66, v106
	v_fmac_f32_e32 v61, v66, v107
	v_fmac_f32_e32 v62, v66, v108
	v_fmac_f32_e32 v63, v66, v109
	v_fmac_f32_e32 v56, v70, v106
	v_fmac_f32_e32 v57, v70, v107
	v_fmac_f32_e32 v58, v70, v108
	v_fmac_f32_e32 v59, v70, v109
	v_fmac_f32_e32 v52, v74, v106
	v_fmac_f32_e32 v53, v74, v107
	v_fmac_f32_e32 v54, v74, v108
	v_fmac_f32_e32 v55, v74, v109
	v_fmac_f32_e32 v44, v82, v106
	v_fmac_f32_e32 v45, v82, v107
	v_fmac_f32_e32 v46, v82, v108
	v_fmac_f32_e32 v47, v82, v109
	v_fmac_f32_e32 v36, v90, v106
	v_fmac_f32_e32 v37, v90, v107
	v_fmac_f32_e32 v38, v90, v108
	v_fmac_f32_e32 v39, v90, v109
	v_fmac_f32_e32 v20, v86, v106
	v_fmac_f32_e32 v21, v86, v107
	v_fmac_f32_e32 v22, v86, v108
	v_fmac_f32_e32 v23, v86, v109
	v_fmac_f32_e32 v48, v78, v106
	v_fmac_f32_e32 v49, v78, v107
	v_fmac_f32_e32 v50, v78, v108
	v_fmac_f32_e32 v51, v78, v109
	v_fmac_f32_e32 v28, v94, v106
	v_fmac_f32_e32 v29, v94, v107
	v_fmac_f32_e32 v30, v94, v108
	v_fmac_f32_e32 v31, v94, v109
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v40, v66, v102
	v_fmac_f32_e32 v41, v66, v103
	v_fmac_f32_e32 v42, v66, v104
	v_fmac_f32_e32 v43, v66, v105
	v_fmac_f32_e32 v32, v70, v102
	v_fmac_f32_e32 v33, v70, v103
	v_fmac_f32_e32 v34, v70, v104
	v_fmac_f32_e32 v35, v70, v105
	v_fmac_f32_e32 v24, v74, v102
	v_fmac_f32_e32 v25, v74, v103
	v_fmac_f32_e32 v26, v74, v104
	v_fmac_f32_e32 v27, v74, v105
	v_fmac_f32_e32 v16, v78, v102
	v_fmac_f32_e32 v17, v78, v103
	v_fmac_f32_e32 v18, v78, v104
	v_fmac_f32_e32 v19, v78, v105
	v_fmac_f32_e32 v12, v82, v102
	v_fmac_f32_e32 v13, v82, v103
	v_fmac_f32_e32 v14, v82, v104
	v_fmac_f32_e32 v15, v82, v105
	v_fmac_f32_e32 v8, v90, v102
	v_fmac_f32_e32 v9, v90, v103
	v_fmac_f32_e32 v10, v90, v104
	v_fmac_f32_e32 v11, v90, v105
	v_fmac_f32_e32 v4, v94, v102
	v_fmac_f32_e32 v5, v94, v103
	v_fmac_f32_e32 v6, v94, v104
	v_fmac_f32_e32 v7, v94, v105
	v_fmac_f32_e32 v0, v86, v102
	v_fmac_f32_e32 v1, v86, v103
	v_fmac_f32_e32 v2, v86, v104
	v_fmac_f32_e32 v3, v86, v105
	s_clause 0x2
	global_load_dwordx4 v[72:75], v[98:99], off offset:128
	global_load_dwordx4 v[68:71], v[98:99], off offset:144
	global_load_dwordx4 v[64:67], v[98:99], off offset:160
	global_load_dwordx4 v[102:105], v[96:97], off offset:48
	s_clause 0x4
	global_load_dwordx4 v[80:83], v[98:99], off offset:176
	global_load_dwordx4 v[88:91], v[98:99], off offset:192
	global_load_dwordx4 v[84:87], v[98:99], off offset:208
	global_load_dwordx4 v[92:95], v[98:99], off offset:224
	global_load_dwordx4 v[76:79], v[98:99], off offset:240
	s_waitcnt vmcnt(7)
	v_fmac_f32_e32 v60, v110, v68
	v_fmac_f32_e32 v40, v110, v72
	s_waitcnt vmcnt(5)
	v_fmac_f32_e32 v32, v102, v72
	v_fmac_f32_e32 v33, v102, v73
	v_fmac_f32_e32 v34, v102, v74
	v_fmac_f32_e32 v35, v102, v75
	v_fmac_f32_e32 v56, v102, v68
	v_fmac_f32_e32 v57, v102, v69
	v_fmac_f32_e32 v58, v102, v70
	v_fmac_f32_e32 v59, v102, v71
	v_fmac_f32_e32 v32, v103, v64
	v_fmac_f32_e32 v33, v103, v65
	v_fmac_f32_e32 v34, v103, v66
	v_fmac_f32_e32 v35, v103, v67
	s_waitcnt vmcnt(4)
	v_fmac_f32_e32 v56, v103, v80
	v_fmac_f32_e32 v57, v103, v81
	v_fmac_f32_e32 v58, v103, v82
	v_fmac_f32_e32 v59, v103, v83
	s_waitcnt vmcnt(3)
	v_fmac_f32_e32 v32, v104, v88
	v_fmac_f32_e32 v33, v104, v89
	v_fmac_f32_e32 v34, v104, v90
	v_fmac_f32_e32 v35, v104, v91
	s_waitcnt vmcnt(2)
	v_fmac_f32_e32 v56, v104, v84
	v_fmac_f32_e32 v57, v104, v85
	v_fmac_f32_e32 v58, v104, v86
	v_fmac_f32_e32 v59, v104, v87
	s_waitcnt vmcnt(1)
	v_fmac_f32_e32 v32, v105, v92
	v_fmac_f32_e32 v33, v105, v93
	v_fmac_f32_e32 v34, v105, v94
	v_fmac_f32_e32 v35, v105, v95
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v56, v105, v76
	v_fmac_f32_e32 v57, v105, v77
	v_fmac_f32_e32 v58, v105, v78
	v_fmac_f32_e32 v59, v105, v79
	global_load_dwordx4 v[102:105], v[96:97], off offset:80
	v_fmac_f32_e32 v41, v110, v73
	v_fmac_f32_e32 v42, v110, v74
	v_fmac_f32_e32 v43, v110, v75
	v_fmac_f32_e32 v61, v110, v69
	v_fmac_f32_e32 v62, v110, v70
	v_fmac_f32_e32 v63, v110, v71
	v_fmac_f32_e32 v40, v111, v64
	v_fmac_f32_e32 v41, v111, v65
	v_fmac_f32_e32 v42, v111, v66
	v_fmac_f32_e32 v43, v111, v67
	v_fmac_f32_e32 v60, v111, v80
	v_fmac_f32_e32 v61, v111, v81
	v_fmac_f32_e32 v62, v111, v82
	v_fmac_f32_e32 v63, v111, v83
	v_fmac_f32_e32 v40, v112, v88
	v_fmac_f32_e32 v41, v112, v89
	v_fmac_f32_e32 v42, v112, v90
	v_fmac_f32_e32 v43, v112, v91
	v_fmac_f32_e32 v60, v112, v84
	v_fmac_f32_e32 v61, v112, v85
	v_fmac_f32_e32 v62, v112, v86
	v_fmac_f32_e32 v63, v112, v87
	v_fmac_f32_e32 v40, v113, v92
	v_fmac_f32_e32 v41, v113, v93
	v_fmac_f32_e32 v42, v113, v94
	v_fmac_f32_e32 v43, v113, v95
	v_fmac_f32_e32 v60, v113, v76
	v_fmac_f32_e32 v61, v113, v77
	v_fmac_f32_e32 v62, v113, v78
	v_fmac_f32_e32 v63, v113, v79
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v24, v102, v72
	v_fmac_f32_e32 v25, v102, v73
	v_fmac_f32_e32 v26, v102, v74
	v_fmac_f32_e32 v27, v102, v75
	v_fmac_f32_e32 v52, v102, v68
	v_fmac_f32_e32 v53, v102, v69
	v_fmac_f32_e32 v54, v102, v70
	v_fmac_f32_e32 v55, v102, v71
	v_fmac_f32_e32 v24, v103, v64
	v_fmac_f32_e32 v25, v103, v65
	v_fmac_f32_e32 v26, v103, v66
	v_fmac_f32_e32 v27, v103, v67
	v_fmac_f32_e32 v52, v103, v80
	v_fmac_f32_e32 v53, v103, v81
	v_fmac_f32_e32 v54, v103, v82
	v_fmac_f32_e32 v55, v103, v83
	v_fmac_f32_e32 v24, v104, v88
	v_fmac_f32_e32 v25, v104, v89
	v_fmac_f32_e32 v26, v104, v90
	v_fmac_f32_e32 v27, v104, v91
	v_fmac_f32_e32 v52, v104, v84
	v_fmac_f32_e32 v53, v104, v85
	v_fmac_f32_e32 v54, v104, v86
	v_fmac_f32_e32 v55, v104, v87
	v_fmac_f32_e32 v24, v105, v92
	v_fmac_f32_e32 v25, v105, v93
	v_fmac_f32_e32 v26, v105, v94
	v_fmac_f32_e32 v27, v105, v95
	v_fmac_f32_e32 v52, v105, v76
	v_fmac_f32_e32 v53, v105, v77
	v_fmac_f32_e32 v54, v105, v78
	v_fmac_f32_e32 v55, v105, v79
	global_load_dwordx4 v[102:105], v[96:97], off offset:112
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v16, v102, v72
	v_fmac_f32_e32 v17, v102, v73
	v_fmac_f32_e32 v18, v102, v74
	v_fmac_f32_e32 v19, v102, v75
	v_fmac_f32_e32 v48, v102, v68
	v_fmac_f32_e32 v49, v102, v69
	v_fmac_f32_e32 v50, v102, v70
	v_fmac_f32_e32 v51, v102, v71
	v_fmac_f32_e32 v16, v103, v64
	v_fmac_f32_e32 v17, v103, v65
	v_fmac_f32_e32 v18, v103, v66
	v_fmac_f32_e32 v19, v103, v67
	v_fmac_f32_e32 v48, v103, v80
	v_fmac_f32_e32 v49, v103, v81
	v_fmac_f32_e32 v50, v103, v82
	v_fmac_f32_e32 v51, v103, v83
	v_fmac_f32_e32 v16, v104, v88
	v_fmac_f32_e32 v17, v104, v89
	v_fmac_f32_e32 v18, v104, v90
	v_fmac_f32_e32 v19, v104, v91
	v_fmac_f32_e32 v48, v104, v84
	v_fmac_f32_e32 v49, v104, v85
	v_fmac_f32_e32 v50, v104, v86
	v_fmac_f32_e32 v51, v104, v87
	v_fmac_f32_e32 v16, v105, v92
	v_fmac_f32_e32 v17, v105, v93
	v_fmac_f32_e32 v18, v105, v94
	v_fmac_f32_e32 v19, v105, v95
	v_fmac_f32_e32 v48, v105, v76
	v_fmac_f32_e32 v49, v105, v77
	v_fmac_f32_e32 v50, v105, v78
	v_fmac_f32_e32 v51, v105, v79
	global_load_dwordx4 v[102:105], v[96:97], off offset:144
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v12, v102, v72
	v_fmac_f32_e32 v13, v102, v73
	v_fmac_f32_e32 v14, v102, v74
	v_fmac_f32_e32 v15, v102, v75
	v_fmac_f32_e32 v44, v102, v68
	v_fmac_f32_e32 v45, v102, v69
	v_fmac_f32_e32 v46, v102, v70
	v_fmac_f32_e32 v47, v102, v71
	v_fmac_f32_e32 v12, v103, v64
	v_fmac_f32_e32 v13, v103, v65
	v_fmac_f32_e32 v14, v103, v66
	v_fmac_f32_e32 v15, v103, v67
	v_fmac_f32_e32 v44, v103, v80
	v_fmac_f32_e32 v45, v103, v81
	v_fmac_f32_e32 v46, v103, v82
	v_fmac_f32_e32 v47, v103, v83
	v_fmac_f32_e32 v12, v104, v88
	v_fmac_f32_e32 v13, v104, v89
	v_fmac_f32_e32 v14, v104, v90
	v_fmac_f32_e32 v15, v104, v91
	v_fmac_f32_e32 v44, v104, v84
	v_fmac_f32_e32 v45, v104, v85
	v_fmac_f32_e32 v46, v104, v86
	v_fmac_f32_e32 v47, v104, v87
	v_fmac_f32_e32 v12, v105, v92
	v_fmac_f32_e32 v13, v105, v93
	v_fmac_f32_e32 v14, v105, v94
	v_fmac_f32_e32 v15, v105, v95
	v_fmac_f32_e32 v44, v105, v76
	v_fmac_f32_e32 v45, v105, v77
	v_fmac_f32_e32 v46, v105, v78
	v_fmac_f32_e32 v47, v105, v79
	global_load_dwordx4 v[102:105], v[96:97], off offset:176
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v8, v102, v72
	v_fmac_f32_e32 v9, v102, v73
	v_fmac_f32_e32 v10, v102, v74
	v_fmac_f32_e32 v11, v102, v75
	v_fmac_f32_e32 v36, v102, v68
	v_fmac_f32_e32 v37, v102, v69
	v_fmac_f32_e32 v38, v102, v70
	v_fmac_f32_e32 v39, v102, v71
	v_fmac_f32_e32 v8, v103, v64
	v_fmac_f32_e32 v9, v103, v65
	v_fmac_f32_e32 v10, v103, v66
	v_fmac_f32_e32 v11, v103, v67
	v_fmac_f32_e32 v36, v103, v80
	v_fmac_f32_e32 v37, v103, v81
	v_fmac_f32_e32 v38, v103, v82
	v_fmac_f32_e32 v39, v103, v83
	v_fmac_f32_e32 v8, v104, v88
	v_fmac_f32_e32 v9, v104, v89
	v_fmac_f32_e32 v10, v104, v90
	v_fmac_f32_e32 v11, v104, v91
	v_fmac_f32_e32 v36, v104, v84
	v_fmac_f32_e32 v37, v104, v85
	v_fmac_f32_e32 v38, v104, v86
	v_fmac_f32_e32 v39, v104, v87
	v_fmac_f32_e32 v8, v105, v92
	v_fmac_f32_e32 v9, v105, v93
	v_fmac_f32_e32 v10, v105, v94
	v_fmac_f32_e32 v11, v105, v95
	v_fmac_f32_e32 v36, v105, v76
	v_fmac_f32_e32 v37, v105, v77
	v_fmac_f32_e32 v38, v105, v78
	v_fmac_f32_e32 v39, v105, v79
	s_clause 0x1
	global_load_dwordx4 v[102:105], v[96:97], off offset:208
	global_load_dwordx4 v[96:99], v[96:97], off offset:240
	s_waitcnt vmcnt(1)
	v_fmac_f32_e32 v4, v102, v72
	v_fmac_f32_e32 v5, v102, v73
	v_fmac_f32_e32 v6, v102, v74
	v_fmac_f32_e32 v7, v102, v75
	v_fmac_f32_e32 v28, v102, v68
	v_fmac_f32_e32 v29, v102, v69
	v_fmac_f32_e32 v30, v102, v70
	v_fmac_f32_e32 v31, v102, v71
	s_waitcnt vmcnt(0)
	v_fmac_f32_e32 v0, v96, v72
	v_fmac_f32_e32 v1, v96, v73
	v_fmac_f32_e32 v2, v96, v74
	v_fmac_f32_e32 v3, v96, v75
	v_fmac_f32_e32 v20, v96, v68
	v_fmac_f32_e32 v21, v96, v69
	v_fmac_f32_e32 v22, v96, v70
	v_fmac_f32_e32 v23, v96, v71
	v_fmac_f32_e32 v4, v103, v64
	v_fmac_f32_e32 v5, v103, v65
	v_fmac_f32_e32 v6, v103, v66
	v_fmac_f32_e32 v7, v103, v67
	v_fmac_f32_e32 v28, v103, v80
	v_fmac_f32_e32 v29, v103, v81
	v_fmac_f32_e32 v30, v103, v82
	v_fmac_f32_e32 v31, v103, v83
	v_fmac_f32_e32 v0, v97, v64
	v_fmac_f32_e32 v1, v97, v65
	v_fmac_f32_e32 v2, v97, v66
	v_fmac_f32_e32 v3, v97, v67
	v_fmac_f32_e32 v20, v97, v80
	v_fmac_f32_e32 v21, v97, v81
	v_fmac_f32_e32 v22, v97, v82
	v_fmac_f32_e32 v23, v97, v83
	v_add_co_u32 v64, vcc, s8, v100
	v_fmac_f32_e32 v4, v104, v88
	v_fmac_f32_e32 v5, v104, v89
	v_fmac_f32_e32 v6, v104, v90
	v_fmac_f32_e32 v7, v104, v91
	v_fmac_f32_e32 v28, v104, v84
	v_fmac_f32_e32 v29, v104, v85
	v_fmac_f32_e32 v30, v104, v86
	v_fmac_f32_e32 v31, v104, v87
	v_fmac_f32_e32 v0, v98, v88
	v_fmac_f32_e32 v1, v98, v89
	v_fmac_f32_e32 v2, v98, v90
	v_fmac_f32_e32 v3, v98, v91
	v_fmac_f32_e32 v20, v98, v84
	v_fmac_f32_e32 v21, v98, v85
	v_fmac_f32_e32 v22, v98, v86
	v_fmac_f32_e32 v23, v98, v87
	v_add_co_ci_u32_e32 v65, vcc, s9, v101, vcc
	v_fmac_f32_e32 v4, v105, v92
	v_fmac_f32_e32 v5, v105, v93
	v_fmac_f32_e32 v6, v105, v94
	v_fmac_f32_e32 v7, v105, v95
	v_fmac_f32_e32 v28, v105, v76
	v_fmac_f32_e32 v29, v105, v77
	v_fmac_f32_e32 v30, v105, v78
	v_fmac_f32_e32 v31, v105, v79
	v_fmac_f32_e32 v0, v99, v92
	v_fmac_f32_e32 v1, v99, v93
	v_fmac_f32_e32 v2, v99, v94
	v_fmac_f32_e32 v3, v99, v95
	v_fmac_f32_e32 v20, v99, v76
	v_fmac_f32_e32 v21, v99, v77
	v_fmac_f32_e32 v22, v99, v78
	v_fmac_f32_e32 v23, v99, v79
	global_store_dwordx4 v[64:65], v[40:43], off
	global_store_dwordx4 v[64:65], v[60:63], off offset:16
	global_store_dwordx4 v[64:65], v[32:35], off offset:32
	global_store_dwordx4 v[64:65], v[56:59], off offset:48
	global_store_dwordx4 v[64:65], v[24:27], off offset:64
	global_store_dwordx4 v[64:65], v[52:55], off offset:80
	global_store_dwordx4 v[64:65], v[16:19], off offset:96
	global_store_dwordx4 v[64:65], v[48:51], off offset:112
	global_store_dwordx4 v[64:65], v[12:15], off offset:128
	global_store_dwordx4 v[64:65], v[44:47], off offset:144
	global_store_dwordx4 v[64:65], v[8:11], off offset:160
	global_store_dwordx4 v[64:65], v[36:39], off offset:176
	global_store_dwordx4 v[64:65], v[4:7], off offset:192
	global_store_dwordx4 v[64:65], v[28:31], off offset:208
	global_store_dwordx4 v[64:65], v[0:3], off offset:224
	global_store_dwordx4 v[64:65], v[20:23], off offset:240
	s_endpgm
	.section	.rodata,"a",@progbits
	.p2align	6, 0x0
	.amdhsa_kernel matmul8
		.amdhsa_group_segment_fixed_size 0
		.amdhsa_private_segment_fixed_size 0
		.amdhsa_kernarg_size 24
		.amdhsa_user_sgpr_count 6
		.amdhsa_user_sgpr_private_segment_buffer 1
		.amdhsa_user_sgpr_dispatch_ptr 0
		.amdhsa_user_sgpr_queue_ptr 0
		.amdhsa_user_sgpr_kernarg_segment_ptr 1
		.amdhsa_user_sgpr_dispatch_id 0
		.amdhsa_user_sgpr_flat_scratch_init 0
		.amdhsa_user_sgpr_private_segment_size 0
		.amdhsa_wavefront_size32 0
		.amdhsa_uses_dynamic_stack 0
		.amdhsa_system_sgpr_private_segment_wavefront_offset 0
		.amdhsa_system_sgpr_workgroup_id_x 1
		.amdhsa_system_sgpr_workgroup_id_y 0
		.amdhsa_system_sgpr_workgroup_id_z 0
		.amdhsa_system_sgpr_workgroup_info 0
		.amdhsa_system_vgpr_workitem_id 0
		.amdhsa_next_free_vgpr 114
		.amdhsa_next_free_sgpr 12
		.amdhsa_reserve_vcc 1
		.amdhsa_reserve_flat_scratch 0
		.amdhsa_reserve_xnack_mask 1
		.amdhsa_float_round_mode_32 0
		.amdhsa_float_round_mode_16_64 0
		.amdhsa_float_denorm_mode_32 3
		.amdhsa_float_denorm_mode_16_64 3
		.amdhsa_dx10_clamp 1
		.amdhsa_ieee_mode 1
		.amdhsa_fp16_overflow 0
		.amdhsa_workgroup_processor_mode 1
		.amdhsa_memory_ordered 1
		.amdhsa_forward_progress 0
		.amdhsa_shared_vgpr_count 0
		.amdhsa_exception_fp_ieee_invalid_op 0
		.amdhsa_exception_fp_denorm_src 0
		.amdhsa_exception_fp_ieee_div_zero 0
		.amdhsa_exception_fp_ieee_overflow 0
		.amdhsa_exception_fp_ieee_underflow 0
		.amdhsa_exception_fp_ieee_inexact 0
		.amdhsa_exception_int_div_zero 0
	.end_amdhsa_kernel
	.text
.Lfunc_end1:
	.size	matmul8, .Lfunc_end1-matmul8
                                        ; -- End function
	.section	.AMDGPU.csdata,"",@progbits
; Kernel info:
; codeLenInByte = 2904
; NumSgprs: 14
; NumVgprs: 114
; ScratchSize: 0
; MemoryBound: 0
; FloatMode: 240
; IeeeMode: 1
; LDSByteSize: 0 bytes/workgroup (compile time only)
; SGPRBlocks: 1
; VGPRBlocks: 28
; NumSGPRsForWavesPerEU: 14
; NumVGPRsForWavesPerEU: 114
; Occupancy: 4
; WaveLimiterHint : 0
; COMPUTE_PGM_RSRC2:SCRATCH_EN: 0
; COMPUTE_PGM_RSRC2:USER_SGPR: 6
; COMPUTE_PGM_RSRC2:TRAP_HANDLER: 0
; COMPUTE_PGM_RSRC2:TGID_X_EN: 1
; COMPUTE_PGM_RSRC2:TGID_Y_EN: 0
; COMPUTE_PGM_RSRC2:TGID_Z_EN: 0
; COMPUTE_PGM_RSRC2:TIDIG_COMP_CNT: 0
	.text
	.protected	vgpr65                  ; -- Begin function vgpr65
	.globl	vgpr65
	.p2align	8
	.type	vgpr65,@function
vgpr65:                                 ; @vgpr65
; %bb.0:
	s_load_dwordx2 s[0:1], s[4:5], 0x0
	v_mov_b32_e32 v1, 0
	v_lshl_or_b32 v0, s6, 8, v0
	;;#ASMSTART
	v_mov_b32 v64, 0
	;;#ASMEND
	v_lshlrev_b64 v[0:1], 2, v[0:1]
	s_waitcnt lgkmcnt(0)
	v_add_co_u32 v0, vcc, s0, v0
	v_add_co_ci_u32_e32 v1, vcc, s1, v1, vcc
	global_load_dword v2, v[0:1], off
	s_waitcnt vmcnt(0)
	v_add_f32_e32 v2, 1.0, v2
	global_store_dword v[0:1], v2, off
	s_endpgm
	.section	.rodata,"a",@progbits
	.p2align	6, 0x0
	.amdhsa_kernel vgpr65
		.amdhsa_group_segment_fixed_size 0
		.amdhsa_private_segment_fixed_size 0
		.amdhsa_kernarg_size 8
		.amdhsa_user_sgpr_count 6
		.amdhsa_user_sgpr_private_segment_buffer 1
		.amdhsa_user_sgpr_dispatch_ptr 0
		.amdhsa_user_sgpr_queue_ptr 0
		.amdhsa_user_sgpr_kernarg_segment_ptr 1
		.amdhsa_user_sgpr_dispatch_id 0
		.amdhsa_user_sgpr_flat_scratch_init 0
		.amdhsa_user_sgpr_private_segment_size 0
		.amdhsa_wavefront_size32 0
		.amdhsa_uses_dynamic_stack 0
		.amdhsa_system_sgpr_private_segment_wavefront_offset 0
		.amdhsa_system_sgpr_workgroup_id_x 1
		.amdhsa_system_sgpr_workgroup_id_y 0
		.amdhsa_system_sgpr_workgroup_id_z 0
		.amdhsa_system_sgpr_workgroup_info 0
		.amdhsa_system_vgpr_workitem_id 0
		.amdhsa_next_free_vgpr 65
		.amdhsa_next_free_sgpr 7
		.amdhsa_reserve_vcc 1
		.amdhsa_reserve_flat_scratch 0
		.amdhsa_reserve_xnack_mask 1
		.amdhsa_float_round_mode_32 0
		.amdhsa_float_round_mode_16_64 0
		.amdhsa_float_denorm_mode_32 3
		.amdhsa_float_denorm_mode_16_64 3
		.amdhsa_dx10_clamp 1
		.amdhsa_ieee_mode 1
		.amdhsa_fp16_overflow 0
		.amdhsa_workgroup_processor_mode 1
		.amdhsa_memory_ordered 1
		.amdhsa_forward_progress 0
		.amdhsa_shared_vgpr_count 0
		.amdhsa_exception_fp_ieee_invalid_op 0
		.amdhsa_exception_fp_denorm_src 0
		.amdhsa_exception_fp_ieee_div_zero 0
		.amdhsa_exception_fp_ieee_overflow 0
		.amdhsa_exception_fp_ieee_underflow 0
		.amdhsa_exception_fp_ieee_inexact 0
		.amdhsa_exception_int_div_zero 0
	.end_amdhsa_kernel
	.text
.Lfunc_end2:
	.size	vgpr65, .Lfunc_end2-vgpr65
                                        ; -- End function
	.section	.AMDGPU.csdata,"",@progbits
; Kernel info:
; codeLenInByte = 92
; NumSgprs: 9
; NumVgprs: 65
; ScratchSize: 0
; MemoryBound: 0
; FloatMode: 240
; IeeeMode: 1
; LDSByteSize: 0 bytes/workgroup (compile time only)
; SGPRBlocks: 1
; VGPRBlocks: 16
; NumSGPRsForWavesPerEU: 9
; NumVGPRsForWavesPerEU: 65
; Occupancy: 7
; WaveLimiterHint : 0
; COMPUTE_PGM_RSRC2:SCRATCH_EN: 0
; COMPUTE_PGM_RSRC2:USER_SGPR: 6
; COMPUTE_PGM_RSRC2:TRAP_HANDLER: 0
; COMPUTE_PGM_RSRC2:TGID_X_EN: 1
; COMPUTE_PGM_RSRC2:TGID_Y_EN: 0
; COMPUTE_PGM_RSRC2:TGID_Z_EN: 0
; COMPUTE_PGM_RSRC2:TIDIG_COMP_CNT: 0
	.text
	.protected	sgpr86                  ; -- Begin function sgpr86
	.globl	sgpr86
	.p2align	8
	.type	sgpr86,@function
sgpr86:                                 ; @sgpr86
; %bb.0:
	s_load_dwordx2 s[0:1], s[4:5], 0x0
	v_mov_b32_e32 v1, 0
	v_lshl_or_b32 v0, s6, 8, v0
	;;#ASMSTART
	s_mov_b32 s85, 0
	;;#ASMEND
	v_lshlrev_b64 v[0:1], 2, v[0:1]
	s_waitcnt lgkmcnt(0)
	v_add_co_u32 v0, vcc, s0, v0
	v_add_co_ci_u32_e32 v1, vcc, s1, v1, vcc
	global_load_dword v2, v[0:1], off
	s_waitcnt vmcnt(0)
	v_add_f32_e32 v2, 1.0, v2
	global_store_dword v[0:1], v2, off
	s_endpgm
	.section	.rodata,"a",@progbits
	.p2align	6, 0x0
	.amdhsa_kernel sgpr86
		.amdhsa_group_segment_fixed_size 0
		.amdhsa_private_segment_fixed_size 0
		.amdhsa_kernarg_size 8
		.amdhsa_user_sgpr_count 6
		.amdhsa_user_sgpr_private_segment_buffer 1
		.amdhsa_user_sgpr_dispatch_ptr 0
		.amdhsa_user_sgpr_queue_ptr 0
		.amdhsa_user_sgpr_kernarg_segment_ptr 1
		.amdhsa_user_sgpr_dispatch_id 0
		.amdhsa_user_sgpr_flat_scratch_init 0
		.amdhsa_user_sgpr_private_segment_size 0
		.amdhsa_wavefront_size32 0
		.amdhsa_uses_dynamic_stack 0
		.amdhsa_system_sgpr_private_segment_wavefront_offset 0
		.amdhsa_system_sgpr_workgroup_id_x 1
		.amdhsa_system_sgpr_workgroup_id_y 0
		.amdhsa_system_sgpr_workgroup_id_z 0
		.amdhsa_system_sgpr_workgroup_info 0
		.amdhsa_system_vgpr_workitem_id 0
		.amdhsa_next_free_vgpr 3
		.amdhsa_next_free_sgpr 86
		.amdhsa_reserve_vcc 1
		.amdhsa_reserve_flat_scratch 0
		.amdhsa_reserve_xnack_mask 1
		.amdhsa_float_round_mode_32 0
		.amdhsa_float_round_mode_16_64 0
		.amdhsa_float_denorm_mode_32 3
		.amdhsa_float_denorm_mode_16_64 3
		.amdhsa_dx10_clamp 1
		.amdhsa_ieee_mode 1
		.amdhsa_fp16_overflow 0
		.amdhsa_workgroup_processor_mode 1
		.amdhsa_memory_ordered 1
		.amdhsa_forward_progress 0
		.amdhsa_shared_vgpr_count 0
		.amdhsa_exception_fp_ieee_invalid_op 0
		.amdhsa_exception_fp_denorm_src 0
		.amdhsa_exception_fp_ieee_div_zero 0
		.amdhsa_exception_fp_ieee_overflow 0
		.amdhsa_exception_fp_ieee_underflow 0
		.amdhsa_exception_fp_ieee_inexact 0
		.amdhsa_exception_int_div_zero 0
	.end_amdhsa_kernel
	.text
.Lfunc_end3:
	.size	sgpr86, .Lfunc_end3-sgpr86
                                        ; -- End function
	.section	.AMDGPU.csdata,"",@progbits
; Kernel info:
; codeLenInByte = 92
; NumSgprs: 88
; NumVgprs: 3
; ScratchSize: 0
; MemoryBound: 0
; FloatMode: 240
; IeeeMode: 1
; LDSByteSize: 0 bytes/workgroup (compile time only)
; SGPRBlocks: 10
; VGPRBlocks: 0
; NumSGPRsForWavesPerEU: 88
; NumVGPRsForWavesPerEU: 3
; Occupancy: 20
; WaveLimiterHint : 0
; COMPUTE_PGM_RSRC2:SCRATCH_EN: 0
; COMPUTE_PGM_RSRC2:USER_SGPR: 6
; COMPUTE_PGM_RSRC2:TRAP_HANDLER: 0
; COMPUTE_PGM_RSRC2:TGID_X_EN: 1
; COMPUTE_PGM_RSRC2:TGID_Y_EN: 0
; COMPUTE_PGM_RSRC2:TGID_Z_EN: 0
; COMPUTE_PGM_RSRC2:TIDIG_COMP_CNT: 0
	.text
	.protected	lds_tile                ; -- Begin function lds_tile
	.globl	lds_tile
	.p2align	8
	.type	lds_tile,@function
lds_tile:                               ; @lds_tile
; %bb.0:
	s_load_dwordx2 s[0:1], s[4:5], 0x0
	v_lshlrev_b32_e32 v20, 4, v0
	v_mov_b32_e32 v17, 0
	v_lshl_or_b32 v16, s6, 12, v20
	v_lshlrev_b64 v[1:2], 2, v[16:17]
	s_waitcnt lgkmcnt(0)
	v_add_co_u32 v18, vcc, s0, v1
	v_add_co_ci_u32_e32 v19, vcc, s1, v2, vcc
	s_clause 0x3
	global_load_dwordx4 v[1:4], v[18:19], off
	global_load_dwordx4 v[5:8], v[18:19], off offset:16
	global_load_dwordx4 v[9:12], v[18:19], off offset:32
	global_load_dwordx4 v[13:16], v[18:19], off offset:48
	v_add_nc_u32_e32 v18, 17, v20
	v_lshlrev_b32_e32 v19, 6, v0
	s_waitcnt vmcnt(3)
	ds_write2_b32 v19, v1, v2 offset1:1
	ds_write2_b32 v19, v3, v4 offset0:2 offset1:3
	s_waitcnt vmcnt(2)
	ds_write2_b32 v19, v5, v6 offset0:4 offset1:5
	ds_write2_b32 v19, v7, v8 offset0:6 offset1:7
	s_waitcnt vmcnt(1)
	ds_write2_b32 v19, v9, v10 offset0:8 offset1:9
	ds_write2_b32 v19, v11, v12 offset0:10 offset1:11
	s_waitcnt vmcnt(0)
	ds_write2_b32 v19, v13, v14 offset0:12 offset1:13
	ds_write2_b32 v19, v15, v16 offset0:14 offset1:15
	v_and_b32_e32 v18, 0xff1, v18
	s_barrier
	v_lshl_or_b32 v16, s6, 8, v0
	v_lshlrev_b32_e32 v18, 2, v18
	v_lshlrev_b64 v[0:1], 2, v[16:17]
	ds_read_b32 v2, v18
	v_add_co_u32 v0, vcc, s0, v0
	v_add_co_ci_u32_e32 v1, vcc, s1, v1, vcc
	s_waitcnt lgkmcnt(0)
	global_store_dword v[0:1], v2, off
	s_endpgm
	.section	.rodata,"a",@progbits
	.p2align	6, 0x0
	.amdhsa_kernel lds_tile
		.amdhsa_group_segment_fixed_size 16384
		.amdhsa_private_segment_fixed_size 0
		.amdhsa_kernarg_size 8
		.amdhsa_user_sgpr_count 6
		.amdhsa_user_sgpr_private_segment_buffer 1
		.amdhsa_user_sgpr_dispatch_ptr 0
		.amdhsa_user_sgpr_queue_ptr 0
		.amdhsa_user_sgpr_kernarg_segment_ptr 1
		.amdhsa_user_sgpr_dispatch_id 0
		.amdhsa_user_sgpr_flat_scratch_init 0
		.amdhsa_user_sgpr_private_segment_size 0
		.amdhsa_wavefront_size32 0
		.amdhsa_uses_dynamic_stack 0
		.amdhsa_system_sgpr_private_segment_wavefront_offset 0
		.amdhsa_system_sgpr_workgroup_id_x 1
		.amdhsa_system_sgpr_workgroup_id_y 0
		.amdhsa_system_sgpr_workgroup_id_z 0
		.amdhsa_system_sgpr_workgroup_info 0
		.amdhsa_system_vgpr_workitem_id 0
		.amdhsa_next_free_vgpr 21
		.amdhsa_next_free_sgpr 7
		.amdhsa_reserve_vcc 1
		.amdhsa_reserve_flat_scratch 0
		.amdhsa_reserve_xnack_mask 1
		.amdhsa_float_round_mode_32 0
		.amdhsa_float_round_mode_16_64 0
		.amdhsa_float_denorm_mode_32 3
		.amdhsa_float_denorm_mode_16_64 3
		.amdhsa_dx10_clamp 1
		.amdhsa_ieee_mode 1
		.amdhsa_fp16_overflow 0
		.amdhsa_workgroup_processor_mode 1
		.amdhsa_memory_ordered 1
		.amdhsa_forward_progress 0
		.amdhsa_shared_vgpr_count 0
		.amdhsa_exception_fp_ieee_invalid_op 0
		.amdhsa_exception_fp_denorm_src 0
		.amdhsa_exception_fp_ieee_div_zero 0
		.amdhsa_exception_fp_ieee_overflow 0
		.amdhsa_exception_fp_ieee_underflow 0
		.amdhsa_exception_fp_ieee_inexact 0
		.amdhsa_exception_int_div_zero 0
	.end_amdhsa_kernel
	.text
.Lfunc_end4:
	.size	lds_tile, .Lfunc_end4-lds_tile
                                        ; -- End function
	.section	.AMDGPU.csdata,"",@progbits
; Kernel info:
; codeLenInByte = 240
; NumSgprs: 9
; NumVgprs: 21
; ScratchSize: 0
; MemoryBound: 1
; FloatMode: 240
; IeeeMode: 1
; LDSByteSize: 16384 bytes/workgroup (compile time only)
; SGPRBlocks: 1
; VGPRBlocks: 5
; NumSGPRsForWavesPerEU: 9
; NumVGPRsForWavesPerEU: 21
; Occupancy: 8
; WaveLimiterHint : 1
; COMPUTE_PGM_RSRC2:SCRATCH_EN: 0
; COMPUTE_PGM_RSRC2:USER_SGPR: 6
; COMPUTE_PGM_RSRC2:TRAP_HANDLER: 0
; COMPUTE_PGM_RSRC2:TGID_X_EN: 1
; COMPUTE_PGM_RSRC2:TGID_Y_EN: 0
; COMPUTE_PGM_RSRC2:TGID_Z_EN: 0
; COMPUTE_PGM_RSRC2:TIDIG_COMP_CNT: 0
	.text
	.protected	wide                    ; -- Begin function wide
	.globl	wide
	.p2align	8
	.type	wide,@function
wide:                                   ; @wide
; %bb.0:
	s_load_dwordx2 s[0:1], s[4:5], 0x0
	v_mov_b32_e32 v1, 0
	v_lshl_add_u32 v0, s6, 8, v0
	v_lshlrev_b64 v[0:1], 2, v[0:1]
	s_waitcnt lgkmcnt(0)
	v_add_co_u32 v0, vcc, s0, v0
	v_add_co_ci_u32_e32 v1, vcc, s1, v1, vcc
	global_load_dword v2, v[0:1], off
	s_waitcnt vmcnt(0)
	v_add_f32_e32 v2, 2.0, v2
	global_store_dword v[0:1], v2, off
	s_endpgm
	.section	.rodata,"a",@progbits
	.p2align	6, 0x0
	.amdhsa_kernel wide
		.amdhsa_group_segment_fixed_size 0
		.amdhsa_private_segment_fixed_size 0
		.amdhsa_kernarg_size 8
		.amdhsa_user_sgpr_count 6
		.amdhsa_user_sgpr_private_segment_buffer 1
		.amdhsa_user_sgpr_dispatch_ptr 0
		.amdhsa_user_sgpr_queue_ptr 0
		.amdhsa_user_sgpr_kernarg_segment_ptr 1
		.amdhsa_user_sgpr_dispatch_id 0
		.amdhsa_user_sgpr_flat_scratch_init 0
		.amdhsa_user_sgpr_private_segment_size 0
		.amdhsa_wavefront_size32 0
		.amdhsa_uses_dynamic_stack 0
		.amdhsa_system_sgpr_private_segment_wavefront_offset 0
		.amdhsa_system_sgpr_workgroup_id_x 1
		.amdhsa_system_sgpr_workgroup_id_y 0
		.amdhsa_system_sgpr_workgroup_id_z 0
		.amdhsa_system_sgpr_workgroup_info 0
		.amdhsa_system_vgpr_workitem_id 0
		.amdhsa_next_free_vgpr 3
		.amdhsa_next_free_sgpr 7
		.amdhsa_reserve_vcc 1
		.amdhsa_reserve_flat_scratch 0
		.amdhsa_reserve_xnack_mask 1
		.amdhsa_float_round_mode_32 0
		.amdhsa_float_round_mode_16_64 0
		.amdhsa_float_denorm_mode_32 3
		.amdhsa_float_denorm_mode_16_64 3
		.amdhsa_dx10_clamp 1
		.amdhsa_ieee_mode 1
		.amdhsa_fp16_overflow 0
		.amdhsa_workgroup_processor_mode 1
		.amdhsa_memory_ordered 1
		.amdhsa_forward_progress 0
		.amdhsa_shared_vgpr_count 0
		.amdhsa_exception_fp_ieee_invalid_op 0
		.amdhsa_exception_fp_denorm_src 0
		.amdhsa_exception_fp_ieee_div_zero 0
		.amdhsa_exception_fp_ieee_overflow 0
		.amdhsa_exception_fp_ieee_underflow 0
		.amdhsa_exception_fp_ieee_inexact 0
		.amdhsa_exception_int_div_zero 0
	.end_amdhsa_kernel
	.text
.Lfunc_end5:
	.size	wide, .Lfunc_end5-wide
                                        ; -- End function
	.section	.AMDGPU.csdata,"",@progbits
; Kernel info:
; codeLenInByte = 72
; NumSgprs: 9
; NumVgprs: 3
; ScratchSize: 0
; MemoryBound: 0
; FloatMode: 240
; IeeeMode: 1
; LDSByteSize: 0 bytes/workgroup (compile time only)
; SGPRBlocks: 1
; VGPRBlocks: 0
; NumSGPRsForWavesPerEU: 9
; NumVGPRsForWavesPerEU: 3
; Occupancy: 20
; WaveLimiterHint : 0
; COMPUTE_PGM_RSRC2:SCRATCH_EN: 0
; COMPUTE_PGM_RSRC2:USER_SGPR: 6
; COMPUTE_PGM_RSRC2:TRAP_HANDLER: 0
; COMPUTE_PGM_RSRC2:TGID_X_EN: 1
; COMPUTE_PGM_RSRC2:TGID_Y_EN: 0
; COMPUTE_PGM_RSRC2:TGID_Z_EN: 0
; COMPUTE_PGM_RSRC2:TIDIG_COMP_CNT: 0
	.text
	.p2alignl 6, 3214868480
	.fill 48, 4, 3214868480
	.hidden	__oclc_ABI_version              ; @__oclc_ABI_version
	.type	__oclc_ABI_version,@object
	.section	.rodata,"a",@progbits
	.weak	__oclc_ABI_version
	.p2align	2, 0x0
__oclc_ABI_version:
	.long	500                             ; 0x1f4
	.size	__oclc_ABI_version, 4

	.ident	"Debian clang version 19.1.7 (3~deb12u1)"
	.section	".note.GNU-stack","",@progbits
	.addrsig
	.amdgpu_metadata
---
amdhsa.kernels:
  - .args:
      - .address_space:  global
        .offset:         0
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
      - .offset:         8
        .size:           4
        .type_name:      float
        .value_kind:     by_value
    .group_segment_fixed_size: 0
    .kernarg_segment_align: 8
    .kernarg_segment_size: 12
    .language:       OpenCL C
    .language_version:
      - 2
      - 0
    .max_flat_workgroup_size: 256
    .name:           light
    .private_segment_fixed_size: 0
    .reqd_workgroup_size:
      - 256
      - 1
      - 1
    .sgpr_count:     9
    .sgpr_spill_count: 0
    .symbol:         light.kd
    .uses_dynamic_stack: false
    .vgpr_count:     3
    .vgpr_spill_count: 0
    .wavefront_size: 64
    .workgroup_processor_mode: 1
  - .args:
      - .address_space:  global
        .offset:         0
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
      - .address_space:  global
        .is_const:       true
        .offset:         8
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
      - .address_space:  global
        .is_const:       true
        .offset:         16
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
    .group_segment_fixed_size: 0
    .kernarg_segment_align: 8
    .kernarg_segment_size: 24
    .language:       OpenCL C
    .language_version:
      - 2
      - 0
    .max_flat_workgroup_size: 256
    .name:           matmul8
    .private_segment_fixed_size: 0
    .sgpr_count:     14
    .sgpr_spill_count: 0
    .symbol:         matmul8.kd
    .uses_dynamic_stack: false
    .vgpr_count:     114
    .vgpr_spill_count: 0
    .wavefront_size: 64
    .workgroup_processor_mode: 1
  - .args:
      - .address_space:  global
        .offset:         0
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
    .group_segment_fixed_size: 0
    .kernarg_segment_align: 8
    .kernarg_segment_size: 8
    .language:       OpenCL C
    .language_version:
      - 2
      - 0
    .max_flat_workgroup_size: 256
    .name:           vgpr65
    .private_segment_fixed_size: 0
    .sgpr_count:     9
    .sgpr_spill_count: 0
    .symbol:         vgpr65.kd
    .uses_dynamic_stack: false
    .vgpr_count:     65
    .vgpr_spill_count: 0
    .wavefront_size: 64
    .workgroup_processor_mode: 1
  - .args:
      - .address_space:  global
        .offset:         0
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
    .group_segment_fixed_size: 0
    .kernarg_segment_align: 8
    .kernarg_segment_size: 8
    .language:       OpenCL C
    .language_version:
      - 2
      - 0
    .max_flat_workgroup_size: 256
    .name:           sgpr86
    .private_segment_fixed_size: 0
    .sgpr_count:     88
    .sgpr_spill_count: 0
    .symbol:         sgpr86.kd
    .uses_dynamic_stack: false
    .vgpr_count:     3
    .vgpr_spill_count: 0
    .wavefront_size: 64
    .workgroup_processor_mode: 1
  - .args:
      - .address_space:  global
        .offset:         0
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
    .group_segment_fixed_size: 16384
    .kernarg_segment_align: 8
    .kernarg_segment_size: 8
    .language:       OpenCL C
    .language_version:
      - 2
      - 0
    .max_flat_workgroup_size: 256
    .name:           lds_tile
    .private_segment_fixed_size: 0
    .reqd_workgroup_size:
      - 256
      - 1
      - 1
    .sgpr_count:     9
    .sgpr_spill_count: 0
    .symbol:         lds_tile.kd
    .uses_dynamic_stack: false
    .vgpr_count:     21
    .vgpr_spill_count: 0
    .wavefront_size: 64
    .workgroup_processor_mode: 1
  - .args:
      - .address_space:  global
        .offset:         0
        .size:           8
        .type_name:      'float*'
        .value_kind:     global_buffer
    .group_segment_fixed_size: 0
    .kernarg_segment_align: 8
    .kernarg_segment_size: 8
    .language:       OpenCL C
    .language_version:
      - 2
      - 0
    .max_flat_workgroup_size: 1024
    .name:           wide
    .private_segment_fixed_size: 0
    .reqd_workgroup_size:
      - 1024
      - 1
      - 1
    .sgpr_count:     9
    .sgpr_spill_count: 0
    .symbol:         wide.kd
    .uses_dynamic_stack: false
    .vgpr_count:     3
    .vgpr_spill_count: 0
    .wavefront_size: 64
    .workgroup_processor_mode: 1
amdhsa.target:   amdgcn-amd-amdhsa--gfx1010
amdhsa.version:
  - 1
  - 2
...

	.end_amdgpu_metadata

include $(sort $(wildcard $(BR2_EXTERNAL_VYM_PATH)/package/*/*.mk))

################################################################################
#
# vym
#
################################################################################

VYM_VERSION = 1.0.0
# The tree that this directory is part of; a product names its own mirror here.
VYM_SITE = $(BR2_EXTERNAL_VYM_PATH)/../..
VYM_SITE_METHOD = local
VYM_LICENSE = MIT
VYM_LICENSE_FILES = LICENSE
VYM_INSTALL_STAGING = YES
VYM_SUPPORTS_IN_SOURCE_BUILD = NO

# BUILD_SHARED_LIBS is set by the infrastructure.
VYM_CONF_OPTS = \
	-DBUILD_TESTING=OFF \
	-DVYM_BUILD_SIM=OFF \
	-DVYM_BUILD_TOOLS=OFF \
	-DVYM_BUILD_EXAMPLES=OFF

$(eval $(cmake-package))

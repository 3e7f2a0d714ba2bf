// The editor's session: files, views and the bound variables.
#pragma once

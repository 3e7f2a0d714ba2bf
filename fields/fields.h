// Field manager: pages of fields over a grid of cells.
#pragma once

#pragma once

// Audio family: AMR and AAC storage files and codecs.

# The VST 2 plug-in files: one per registered variant.
#
# Each row: registry identifier | plug-in name | unique id (four characters).
# The file is "AudioFilters <plug-in name>.so"; a host shows the plug-in name.
#
# Hosts tell plug-ins apart, store them in sessions and dedupe them by the
# unique id, so each variant has one of its own here, and this table is the
# only place it is given. Ids never change once published: a session saved
# with a plug-in finds it again by this id. The scheme is two characters for
# the family and two for the layout (01 mono, 02 stereo, 51 for 5.1, 16 for
# sixteen channels); none starts with 'A', so none meets an id of the module's
# own records, which the plug-in files replace.
set(AF_VST2_VARIANTS
    "Internal Invert Mono|Invert Mono|In01"
    "Internal Invert Stereo|Invert Stereo|In02"
    "Internal Invert 5.1|Invert 5.1|In51"
    "Internal Invert 16 Channel|Invert 16 Channel|In16"
    "Internal Volume Mono|Volume Mono|Vo01"
    "Internal Volume Stereo|Volume Stereo|Vo02"
    "Internal Volume 5.1|Volume 5.1|Vo51"
    "Internal Volume 16 Channel|Volume 16 Channel|Vo16"
    "Internal Mute Mono|Mute Mono|Mu01"
    "Internal Mute Stereo|Mute Stereo|Mu02"
    "Internal Mute 5.1|Mute 5.1|Mu51"
    "Internal Mute 16 Channel|Mute 16 Channel|Mu16"
    "Internal Delay Mono|Delay Mono|De01"
    "Internal Delay Stereo|Delay Stereo|De02"
    "Internal Delay 5.1|Delay 5.1|De51"
    "Internal Delay 16 Channel|Delay 16 Channel|De16"
    "Internal Multitap Delay Mono|Multitap Delay Mono|Mt01"
    "Internal Multitap Delay Stereo|Multitap Delay Stereo|Mt02"
    "Internal Multitap Delay 5.1|Multitap Delay 5.1|Mt51"
    "Internal Multitap Delay 16 Channel|Multitap Delay 16 Channel|Mt16"
    "Internal Lowpass Mono|Lowpass Mono|Lp01"
    "Internal Lowpass Stereo|Lowpass Stereo|Lp02"
    "Internal Lowpass 5.1|Lowpass 5.1|Lp51"
    "Internal Lowpass 16 Channel|Lowpass 16 Channel|Lp16"
    "Internal Highpass Mono|Highpass Mono|Hp01"
    "Internal Highpass Stereo|Highpass Stereo|Hp02"
    "Internal Highpass 5.1|Highpass 5.1|Hp51"
    "Internal Highpass 16 Channel|Highpass 16 Channel|Hp16"
    "Internal Bandreject Mono|Notch Mono|Nt01"
    "Internal Bandreject Stereo|Notch Stereo|Nt02"
    "Internal Bandreject 5.1|Notch 5.1|Nt51"
    "Internal Bandreject 16 Channel|Notch 16 Channel|Nt16"
    "Internal Bandpass Mono|Bandpass Mono|Bp01"
    "Internal Bandpass Stereo|Bandpass Stereo|Bp02"
    "Internal Bandpass 5.1|Bandpass 5.1|Bp51"
    "Internal Bandpass 16 Channel|Bandpass 16 Channel|Bp16"
    "Internal Bass Mono|Bass Mono|Ba01"
    "Internal Bass Stereo|Bass Stereo|Ba02"
    "Internal Bass 5.1|Bass 5.1|Ba51"
    "Internal Bass 16 Channel|Bass 16 Channel|Ba16"
    "Internal Treble Mono|Treble Mono|Tr01"
    "Internal Treble Stereo|Treble Stereo|Tr02"
    "Internal Treble 5.1|Treble 5.1|Tr51"
    "Internal Treble 16 Channel|Treble 16 Channel|Tr16"
    "Internal Parametric EQ Mono|Parametric EQ Mono|Pq01"
    "Internal Parametric EQ Stereo|Parametric EQ Stereo|Pq02"
    "Internal Parametric EQ 5.1|Parametric EQ 5.1|Pq51"
    "Internal Parametric EQ 16 Channel|Parametric EQ 16 Channel|Pq16"
    "Internal Swap Channels|Swap Channels|Sw02"
    "Internal Fill Left|Fill Left|Fl02"
    "Internal Fill Right|Fill Right|Fr02"
    "Internal Balance|Balance|Bl02"
    "Internal Channel Volume Stereo|Channel Volume Stereo|Cv02"
    "Internal Channel Volume 5.1|Channel Volume 5.1|Cv51"
    "Internal Channel Volume 16 Channel|Channel Volume 16 Channel|Cv16"
)

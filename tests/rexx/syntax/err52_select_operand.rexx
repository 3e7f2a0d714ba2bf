if a then select b
end

end
